#include "testfaces.h"

#include "surface/blazefacedetector.h"
#include "surface/cascadefacedetector.h"
#include "surface/facedetectors.h"
#include "surface/smartreframe.h"
#include "surface/ultrafacedetector.h"

#include <QTemporaryDir>
#include <QTest>

using Model = BlazeFaceDetector::Model;
using Tiling = BlazeFaceDetector::Tiling;

class TestFaceDetectors : public QObject
{
    Q_OBJECT

private:
    std::vector<std::unique_ptr<FaceDetector>> allDetectors()
    {
        std::vector<std::unique_ptr<FaceDetector>> detectors;
        for (Model model : {Model::front, Model::back}) {
            for (Tiling tiling : {Tiling::letterbox, Tiling::squares}) {
                auto detector = std::make_unique<BlazeFaceDetector>(FaceDetectors::modelDirectory(),
                                                                    model, tiling);
                if (!detector->isValid())
                    qWarning("no BlazeFace model in %s",
                             qPrintable(FaceDetectors::modelDirectory()));
                else
                    detectors.push_back(std::move(detector));
            }
        }
        auto ultraFace = std::make_unique<UltraFaceDetector>(FaceDetectors::modelDirectory());
        if (ultraFace->isValid())
            detectors.push_back(std::move(ultraFace));
        else
            qWarning("no UltraFace model in %s", qPrintable(FaceDetectors::modelDirectory()));
        auto cascade = std::make_unique<CascadeFaceDetector>(FaceDetectors::cascadeFile());
        if (cascade->isValid())
            detectors.push_back(std::move(cascade));
        return detectors;
    }

private Q_SLOTS:
    void modelsAndCascadeAreInstalled()
    {
        QVERIFY2(BlazeFaceDetector(FaceDetectors::modelDirectory(), Model::front).isValid(),
                 "run ./lumo setup");
        QVERIFY(BlazeFaceDetector(FaceDetectors::modelDirectory(), Model::back).isValid());
        QVERIFY(UltraFaceDetector(FaceDetectors::modelDirectory()).isValid());
        QVERIFY(CascadeFaceDetector(FaceDetectors::cascadeFile()).isValid());
        const std::unique_ptr<FaceDetector> chosen = FaceDetectors::makeDefault();
        QVERIFY(chosen);
        QCOMPARE(chosen->name(), UltraFaceDetector(FaceDetectors::modelDirectory()).name());
        QVERIFY(chosen->name().startsWith("UltraFace 320 tiles"));
    }

    void aSmallFaceInA1080pFrameIsFoundAtItsPlace_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("x");
        QTest::newRow("3 % at the left") << 0.03 << 0.2;
        QTest::newRow("3 % in the middle") << 0.03 << 0.5;
        QTest::newRow("2 % at the right") << 0.02 << 0.8;
        QTest::newRow("2.5 % left of the middle") << 0.025 << 0.4;
    }

    void aSmallFaceInA1080pFrameIsFoundAtItsPlace()
    {
        // As smart reframe sees a wide shot: the picture at the sample's width.
        QFETCH(double, width);
        QFETCH(double, x);
        const TestFaces::Photo photo = TestFaces::photos().first();
        const QImage image = TestFaces::load(photo);
        QVERIFY(!image.isNull());
        const QRectF face = photo.faces.first();
        const double scale = width * 1920 / (face.width() * image.width());
        QList<QRectF> faces;
        const QImage frame = TestFaces::place(image, photo.faces, {1920, 1080}, scale,
                                              face.center(), {x, 0.5}, &faces);
        QCOMPARE(faces.size(), 1);
        const std::unique_ptr<FaceDetector> chosen = FaceDetectors::makeDefault();
        QVERIFY(chosen);
        const QList<QRectF> found = chosen->detect(
            frame.scaledToWidth(SmartReframe::sampleWidth, Qt::SmoothTransformation));
        QVERIFY2(TestFaces::hits(found, faces.first()), qPrintable(chosen->name()));
        QCOMPARE(found.size(), 1);
    }

    void everyDetectorFindsTheAstronaut()
    {
        const TestFaces::Photo photo = TestFaces::photos().first();
        const QImage image = TestFaces::load(photo);
        QVERIFY(!image.isNull());
        for (const auto &detector : allDetectors()) {
            const QList<QRectF> found = detector->detect(image);
            QVERIFY2(TestFaces::hits(found, photo.faces.first()), qPrintable(detector->name()));
        }
    }

    void aFaceInAWideFrameIsFoundWhereItIs()
    {
        const TestFaces::Photo photo = TestFaces::photos().first();
        const QImage image = TestFaces::load(photo);
        QVERIFY(!image.isNull());
        BlazeFaceDetector detector(FaceDetectors::modelDirectory(), Model::front, Tiling::squares);
        for (int left : {0, 700, 1408}) {
            QRectF face;
            const QImage frame
                = TestFaces::compose(image, photo.faces.first(), {1920, 1080}, 1080, left, &face);
            const QList<QRectF> found
                = detector.detect(frame.scaledToWidth(256, Qt::SmoothTransformation));
            QVERIFY2(TestFaces::hits(found, face), qPrintable(QString::number(left)));
        }
    }

    void squaresSpanTheFrame()
    {
        BlazeFaceDetector squares(FaceDetectors::modelDirectory(), Model::front, Tiling::squares);
        QCOMPARE(squares.tiles({256, 144}),
                 QList<QRect>({QRect(0, 0, 144, 144), QRect(112, 0, 144, 144)}));
        QCOMPARE(squares.tiles({144, 256}),
                 QList<QRect>({QRect(0, 0, 144, 144), QRect(0, 112, 144, 144)}));
        QCOMPARE(squares.tiles({100, 100}), QList<QRect>({QRect(0, 0, 100, 100)}));
        QCOMPARE(squares.tiles({400, 100}).size(), 4);
        BlazeFaceDetector letterbox(FaceDetectors::modelDirectory(), Model::front);
        QCOMPARE(letterbox.tiles({256, 144}), QList<QRect>({QRect(0, 0, 256, 144)}));
    }

    void aPlainFrameHasNoFace()
    {
        QImage grey(256, 144, QImage::Format_RGB32);
        grey.fill(QColor(128, 128, 128));
        for (const auto &detector : allDetectors())
            QVERIFY2(detector->detect(grey).isEmpty(), qPrintable(detector->name()));
    }

    void unusableFramesGiveNoFaceAndNoCrash()
    {
        QImage gray8(64, 64, QImage::Format_Grayscale8);
        gray8.fill(0);
        QImage tiny(1, 1, QImage::Format_RGB32);
        tiny.fill(Qt::white);
        QImage thin(256, 1, QImage::Format_RGB32);
        thin.fill(Qt::white);
        for (const auto &detector : allDetectors()) {
            QVERIFY(detector->detect(QImage()).isEmpty());
            QVERIFY(detector->detect(gray8).isEmpty());
            QVERIFY(detector->detect(tiny).isEmpty());
            QVERIFY(detector->detect(thin).isEmpty());
        }
    }

    void missingOrDamagedModelsAreInvalid()
    {
        QTemporaryDir dir;
        QVERIFY(!BlazeFaceDetector(dir.path(), Model::front).isValid());
        QFile damaged(dir.filePath(BlazeFaceDetector::fileName(Model::front)));
        QVERIFY(damaged.open(QIODevice::WriteOnly));
        damaged.write(QByteArray(4096, '\x7f'));
        damaged.close();
        QVERIFY(!BlazeFaceDetector(dir.path(), Model::front).isValid());
        QVERIFY(!UltraFaceDetector(dir.path()).isValid());
        QFile damagedUltraFace(dir.filePath(UltraFaceDetector::fileName()));
        QVERIFY(damagedUltraFace.open(QIODevice::WriteOnly));
        damagedUltraFace.write(QByteArray(4096, '\x7f'));
        damagedUltraFace.close();
        QVERIFY(!UltraFaceDetector(dir.path()).isValid());
        QVERIFY(!CascadeFaceDetector(dir.filePath("none.xml")).isValid());
        QVERIFY(!CascadeFaceDetector(damaged.fileName()).isValid());
    }

    void withoutModelsTheCascadeIsUsed()
    {
        QTemporaryDir dir;
        qputenv(FaceDetectors::modelDirectoryVariable, dir.path().toUtf8());
        QCOMPARE(FaceDetectors::modelDirectory(), dir.path());
        const std::unique_ptr<FaceDetector> chosen = FaceDetectors::makeDefault();
        qunsetenv(FaceDetectors::modelDirectoryVariable);
        QVERIFY(chosen);
        QCOMPARE(chosen->name(), "Haar cascade");
    }
};

QTEST_MAIN(TestFaceDetectors)
#include "tst_facedetectors.moc"
