// lumo-cli faces: the faces smart reframe finds in pictures, as JSON lines.
#include "testfaces.h"

#include "surface/facedetector.h"
#include "surface/facedetectors.h"
#include "surface/smartreframe.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Result
{
    int exitCode = -1;
    QList<QByteArray> out;
    QList<QByteArray> err;
};

Result runFaces(const QStringList &images)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(FaceDetectors::modelDirectoryVariable, FaceDetectors::modelDirectory());
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(LUMO_CLI_PATH), QStringList {QStringLiteral("faces")} + images);
    if (!process.waitForFinished(120000))
        qFatal("lumo-cli did not finish");
    const auto lines = [](const QByteArray &text) {
        QList<QByteArray> result = text.split('\n');
        result.removeAll(QByteArray());
        return result;
    };
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            lines(process.readAllStandardOutput()), lines(process.readAllStandardError())};
}

QList<QRectF> boxes(const QJsonArray &faces)
{
    QList<QRectF> result;
    for (const QJsonValue &face : faces) {
        const QJsonArray box = face.toArray();
        result.append(
            QRectF(box[0].toDouble(), box[1].toDouble(), box[2].toDouble(), box[3].toDouble()));
    }
    return result;
}

} // namespace

class TestLumoFaces : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachImageGivesOneLineInOrder()
    {
        const QList<TestFaces::Photo> photos = TestFaces::photos();
        const TestFaces::Photo astronaut = photos.first();
        const TestFaces::Photo group = photos.at(4);
        QTemporaryDir dir;
        QFile notAnImage(dir.filePath(QStringLiteral("notes.png")));
        QVERIFY(notAnImage.open(QIODevice::WriteOnly));
        notAnImage.write("this is text");
        notAnImage.close();
        const QString astronautPath = TestFaces::directory() + "/" + astronaut.fileName;
        const QString groupPath = TestFaces::directory() + "/" + group.fileName;
        const QString missing = dir.filePath(QStringLiteral("missing.jpg"));
        const Result result = runFaces({astronautPath, notAnImage.fileName(), groupPath, missing});
        // The unreadable ones are named on standard error; the others are still read.
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.err.size(), 2);
        QVERIFY(result.err[0].startsWith("lumo-cli: "));
        QVERIFY(result.err[0].contains(notAnImage.fileName().toUtf8()));
        QVERIFY(result.err[1].contains(missing.toUtf8()));
        QCOMPARE(result.out.size(), 2);

        const QJsonObject first = QJsonDocument::fromJson(result.out[0]).object();
        QVERIFY(result.out[0].startsWith("{\"image\":"));
        QCOMPARE(first.keys(), QStringList({"faces", "image", "ms"}));
        QVERIFY(result.out[0].indexOf("\"faces\"") < result.out[0].indexOf("\"ms\""));
        QCOMPARE(first["image"].toString(), astronautPath);
        QVERIFY(first["ms"].toDouble() > 0);
        const QList<QRectF> astronautFaces = boxes(first["faces"].toArray());
        QCOMPARE(astronautFaces.size(), 1);
        QVERIFY(TestFaces::hits(astronautFaces, astronaut.faces.first()));

        const QJsonObject second = QJsonDocument::fromJson(result.out[1]).object();
        QCOMPARE(second["image"].toString(), groupPath);
        const QList<QRectF> groupFaces = boxes(second["faces"].toArray());
        QCOMPARE(groupFaces.size(), group.faces.size());
        for (const QRectF &face : group.faces)
            QVERIFY(TestFaces::hits(groupFaces, face));
        for (const QRectF &box : groupFaces)
            QVERIFY(QRectF(0, 0, 1, 1).contains(box));
    }

    void theBoxesAreThoseThePlayerFinds()
    {
        // A wide shot: the photograph small in a 1080p frame, sampled as smart reframe samples.
        const TestFaces::Photo group = TestFaces::photos().at(5);
        const QImage image = TestFaces::load(group);
        QVERIFY(!image.isNull());
        QList<QRectF> inFrame;
        const QImage frame = TestFaces::place(image, group.faces, {1920, 1080}, 0.4, {0.5, 0.5},
                                              {0.4, 0.5}, &inFrame);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("wide-shot.png"));
        QVERIFY(frame.save(path));
        const Result result = runFaces({path});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out.size(), 1);
        const QList<QRectF> printed
            = boxes(QJsonDocument::fromJson(result.out[0]).object()["faces"].toArray());

        const std::unique_ptr<FaceDetector> detector = FaceDetectors::makeDefault();
        QVERIFY(detector);
        // The player's own sample of the picture, as the detection thread makes it.
        const QImage sample
            = FaceDetectors::sampleOf(QImage(path).convertToFormat(QImage::Format_RGB32));
        QCOMPARE(sample.size(), SmartReframe::sampleSize(frame.size()));
        const QList<QRectF> found = detector->detect(sample);
        QCOMPARE(printed.size(), found.size());
        for (qsizetype i = 0; i < found.size(); ++i) {
            QVERIFY(qAbs(printed[i].x() - found[i].x()) < 1e-3);
            QVERIFY(qAbs(printed[i].y() - found[i].y()) < 1e-3);
            QVERIFY(qAbs(printed[i].width() - found[i].width()) < 1e-3);
        }
        for (const QRectF &face : std::as_const(inFrame))
            QVERIFY(TestFaces::hits(printed, face));
    }

    void aPictureTooLargeToDecodeIsRefused()
    {
        // A header claiming 60,000 x 60,000 pixels (10 GB decoded) over a few bytes.
        QTemporaryDir dir;
        QFile bomb(dir.filePath(QStringLiteral("bomb.ppm")));
        QVERIFY(bomb.open(QIODevice::WriteOnly));
        bomb.write("P6\n60000 60000\n255\n");
        bomb.write(QByteArray(4096, '\0'));
        bomb.close();
        const QString photo = TestFaces::directory() + "/" + TestFaces::photos().first().fileName;
        const Result result = runFaces({bomb.fileName(), photo});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.err.size(), 1);
        QVERIFY(result.err[0].contains(bomb.fileName().toUtf8()));
        QCOMPARE(result.out.size(), 1);
        QVERIFY(result.out[0].contains(photo.toUtf8()));
    }

    void withoutImagesItExplainsItself()
    {
        const Result result = runFaces({});
        QCOMPARE(result.exitCode, 2);
        QVERIFY(result.err.join().contains("lumo-cli faces IMAGE"));
    }

    // A lumo-cli copied away from the folder it was installed in cannot reach the program that
    // finds faces, and says so.
    void withoutItsFaceProgramItSaysSo()
    {
        QTemporaryDir folder;
        const QString copy = folder.filePath(QStringLiteral("lumo-cli"));
        QVERIFY(QFile::copy(QStringLiteral(LUMO_CLI_PATH), copy));
        QProcess process;
        process.start(copy, {QStringLiteral("faces"), QStringLiteral("photo.png")});
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 1);
        const QByteArray errors = process.readAllStandardError();
        QVERIFY2(errors.startsWith("lumo-cli: cannot start ") && errors.contains("lumo-cli-faces"),
                 errors.constData());
        QVERIFY(process.readAllStandardOutput().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestLumoFaces)
#include "tst_lumofaces.moc"
