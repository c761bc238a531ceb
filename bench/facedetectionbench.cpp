// How often and how fast each face detector finds the real faces of the test photographs,
// placed at several sizes and positions in 1080p frames and sampled as smart reframe samples
// the picture.

#include "benchreport.h"
#include "testfaces.h"

#include "surface/blazefacedetector.h"
#include "surface/cascadefacedetector.h"
#include "surface/facedetectors.h"
#include "surface/smartreframe.h"

#include <QElapsedTimer>
#include <QGuiApplication>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr QSize frameSize(1920, 1080);
constexpr int imageHeights[] {1080, 720, 540, 360};
constexpr int positions = 7;

struct Frame
{
    QImage image;
    QRectF face;
    int imageHeight;
};

std::vector<Frame> makeFrames()
{
    std::vector<Frame> frames;
    for (const TestFaces::Photo &photo : TestFaces::photos()) {
        const QImage image = TestFaces::load(photo);
        if (image.isNull())
            continue;
        for (int height : imageHeights) {
            const int width = image.width() * height / image.height();
            for (int i = 0; i < positions; ++i) {
                const int left = (frameSize.width() - width) * i / (positions - 1);
                Frame frame;
                frame.imageHeight = height;
                frame.image
                    = TestFaces::compose(image, photo.face, frameSize, height, left, &frame.face);
                frames.push_back(frame);
            }
        }
    }
    return frames;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

QString keyFor(const QString &name)
{
    return name.toLower().replace(QLatin1Char(' '), QLatin1Char('_'));
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    BenchReport report(QStringLiteral("faces"));
    const std::vector<Frame> frames = makeFrames();
    if (frames.empty()) {
        report.note(QStringLiteral("no test photographs in %1: run ./lumo setup")
                        .arg(TestFaces::directory()));
        return 1;
    }

    std::vector<std::unique_ptr<FaceDetector>> detectors;
    using Model = BlazeFaceDetector::Model;
    using Tiling = BlazeFaceDetector::Tiling;
    const std::pair<Model, Tiling> variants[] {{Model::front, Tiling::letterbox},
                                               {Model::front, Tiling::squares},
                                               {Model::back, Tiling::letterbox}};
    for (auto [model, tiling] : variants) {
        auto detector
            = std::make_unique<BlazeFaceDetector>(FaceDetectors::modelDirectory(), model, tiling);
        if (detector->isValid())
            detectors.push_back(std::move(detector));
        else
            report.note(
                QStringLiteral("%1 is missing from %2: run ./lumo setup")
                    .arg(BlazeFaceDetector::fileName(model), FaceDetectors::modelDirectory()));
    }
    auto cascade = std::make_unique<CascadeFaceDetector>(FaceDetectors::cascadeFile());
    if (cascade->isValid())
        detectors.push_back(std::move(cascade));

    const std::unique_ptr<FaceDetector> chosen = FaceDetectors::makeDefault();
    report.note(QStringLiteral("%1 frames of 1920x1080: 2 photographs, %2 sizes, %3 positions; "
                               "default detector: %4")
                    .arg(frames.size())
                    .arg(std::size(imageHeights))
                    .arg(positions)
                    .arg(chosen ? chosen->name() : QStringLiteral("none")));

    // Detectors see frames as smart reframe samples them: scaled down on the GPU.
    std::vector<QImage> samples;
    for (const Frame &frame : frames) {
        samples.push_back(
            frame.image.scaledToWidth(SmartReframe::sampleWidth, Qt::SmoothTransformation));
    }
    for (const auto &detector : detectors) {
        const QString key = keyFor(detector->name());
        detector->detect(frames.front().image); // loads lazily allocated buffers
        std::vector<double> times;
        int hits = 0;
        int falseFaces = 0;
        // Faces at least a tenth of the frame's width (interviews, vlogs), 5 to 10 %, smaller.
        int bucketHits[3] {};
        int bucketFrames[3] {};
        for (size_t i = 0; i < frames.size(); ++i) {
            const Frame &frame = frames[i];
            QElapsedTimer timer;
            timer.start();
            const QList<QRectF> found = detector->detect(samples[i]);
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
            const bool hit = TestFaces::hits(found, frame.face);
            hits += hit;
            for (const QRectF &box : found)
                falseFaces += !TestFaces::hits({box}, frame.face);
            const int bucket = frame.face.width() >= 0.1 ? 0 : frame.face.width() >= 0.05 ? 1 : 2;
            ++bucketFrames[bucket];
            bucketHits[bucket] += hit;
        }
        report.add(key + QStringLiteral("_recall"), 100.0 * hits / double(frames.size()),
                   QStringLiteral("%"));
        const char *const bucketNames[] {"_recall_faces_over_10pc", "_recall_faces_5_to_10pc",
                                         "_recall_faces_under_5pc"};
        for (int b = 0; b < 3; ++b) {
            report.add(key + QLatin1String(bucketNames[b]),
                       bucketFrames[b] ? 100.0 * bucketHits[b] / bucketFrames[b] : 0,
                       QStringLiteral("%"));
        }
        report.add(key + QStringLiteral("_false_faces"), falseFaces, QStringLiteral("boxes"));
        report.add(key + QStringLiteral("_median"), median(times), QStringLiteral("ms"));
        report.add(key + QStringLiteral("_worst"), *std::max_element(times.begin(), times.end()),
                   QStringLiteral("ms"));
    }
    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json))
        return 1;
    return 0;
}
