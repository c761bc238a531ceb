// How often and how fast each face detector finds the real faces of the test photographs,
// placed at many sizes and positions in 1080p frames and sampled as smart reframe samples the
// picture, and how many boxes it finds in frames without a face. On one core.

#include "benchreport.h"
#include "testfaces.h"

#include "surface/blazefacedetector.h"
#include "surface/cascadefacedetector.h"
#include "surface/facedetectors.h"
#include "surface/smartreframe.h"
#include "surface/ultrafacedetector.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QRandomGenerator>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr QSize frameSize(1920, 1080);
// The mean face width of a photograph in each frame, as a share of the frame's width.
constexpr double faceWidths[] {0.15, 0.09, 0.06, 0.045, 0.035, 0.027, 0.021, 0.017, 0.014, 0.0125};
constexpr double positions[] {0.2, 0.5, 0.8};

struct Frame
{
    QImage image;
    QList<QRectF> faces;
};

// Face widths in bands, as a share of the frame's width.
constexpr double bandEdges[] {0.05, 0.02, 0.012, 0};
const char *const bandNames[] {"5pc_and_over", "2_to_5pc", "1.2_to_2pc", "under_1.2pc"};

int bandOf(const QRectF &face)
{
    int band = 0;
    while (face.width() < bandEdges[band])
        ++band;
    return band;
}

std::vector<Frame> makeFaceFrames()
{
    std::vector<Frame> frames;
    for (const TestFaces::Photo &photo : TestFaces::photos()) {
        const QImage image = TestFaces::load(photo);
        if (image.isNull())
            continue;
        QPointF centre;
        double meanWidth = 0;
        for (const QRectF &face : photo.faces) {
            centre += face.center() / photo.faces.size();
            meanWidth += face.width() / photo.faces.size();
        }
        for (double width : faceWidths) {
            const double scale = width * frameSize.width() / (meanWidth * image.width());
            for (double x : positions) {
                Frame frame;
                frame.image = TestFaces::place(image, photo.faces, frameSize, scale, centre,
                                               QPointF(x, 0.45), &frame.faces);
                if (!frame.faces.isEmpty())
                    frames.push_back(frame);
            }
        }
    }
    return frames;
}

QImage textSlide(int index)
{
    QImage frame(frameSize, QImage::Format_RGB32);
    const QColor backgrounds[] {Qt::white, QColor(20, 30, 60), QColor(240, 235, 220), Qt::black};
    const QColor inks[] {Qt::black, Qt::white, QColor(60, 40, 20), QColor(250, 220, 0)};
    frame.fill(backgrounds[index % 4]);
    QPainter painter(&frame);
    painter.setPen(inks[index % 4]);
    QFont title(index % 2 ? QStringLiteral("Serif") : QStringLiteral("Sans"));
    title.setPixelSize(72 + 8 * (index % 3));
    title.setBold(true);
    painter.setFont(title);
    painter.drawText(QRect(120, 80, 1680, 160), Qt::AlignLeft | Qt::AlignVCenter,
                     QStringLiteral("Quarterly review %1: what we learned").arg(index + 1));
    QFont body = title;
    body.setBold(false);
    body.setPixelSize(40 + 4 * (index % 4));
    painter.setFont(body);
    for (int line = 0; line < 8; ++line) {
        painter.drawText(QPoint(160, 340 + line * (body.pixelSize() + 28)),
                         QStringLiteral("• Point %1: 0%2 of the schedule, see chapter %3")
                             .arg(line + 1)
                             .arg((index * 7 + line * 13) % 100)
                             .arg(line + index));
    }
    return frame;
}

QImage pattern(int index)
{
    QImage frame(frameSize, QImage::Format_RGB32);
    QPainter painter(&frame);
    const QColor bars[] {Qt::white,   Qt::yellow, Qt::cyan, Qt::green,
                         Qt::magenta, Qt::red,    Qt::blue, Qt::black};
    switch (index % 6) {
    case 0: // colour bars
        for (int i = 0; i < 8; ++i)
            painter.fillRect(i * 240, 0, 240, 1080, bars[(i + index) % 8]);
        break;
    case 1: // a checkerboard
        for (int y = 0; y < 1080; y += 60 + index * 4)
            for (int x = 0; x < 1920; x += 60 + index * 4)
                painter.fillRect(x, y, 60 + index * 4, 60 + index * 4,
                                 ((x + y) / (60 + index * 4)) % 2 ? Qt::black : Qt::white);
        break;
    case 2: { // a gradient
        QLinearGradient gradient(0, 0, 1920, 1080);
        gradient.setColorAt(0, bars[index % 8]);
        gradient.setColorAt(1, bars[(index + 3) % 8]);
        painter.fillRect(frame.rect(), gradient);
        break;
    }
    case 3: { // noise
        QRandomGenerator random {quint32(index)};
        for (int y = 0; y < 1080; ++y) {
            auto *line = reinterpret_cast<quint32 *>(frame.scanLine(y));
            for (int x = 0; x < 1920; ++x)
                line[x] = random.generate() | 0xff000000u;
        }
        break;
    }
    case 4: // circles
        frame.fill(Qt::darkGray);
        painter.setRenderHint(QPainter::Antialiasing);
        for (int i = 0; i < 40; ++i) {
            painter.setBrush(bars[i % 8]);
            painter.drawEllipse(QPointF((i * 397) % 1920, (i * 211) % 1080), 20 + i * 3,
                                20 + i * 3);
        }
        break;
    default: // a grid of lines
        frame.fill(Qt::black);
        painter.setPen(QPen(Qt::white, 3));
        for (int x = 0; x < 1920; x += 96)
            painter.drawLine(x, 0, x, 1080);
        for (int y = 0; y < 1080; y += 108)
            painter.drawLine(0, y, 1920, y);
        break;
    }
    return frame;
}

struct Faceless
{
    QImage image;
    QString label;
};

std::vector<Faceless> makeFacelessFrames()
{
    std::vector<Faceless> frames;
    for (const QString &name : TestFaces::scenes()) {
        const QImage image = TestFaces::loadScene(name);
        if (image.isNull())
            continue;
        // The whole frame, cut to its shape; and smaller, on grey, off centre.
        const double cover = std::max(double(frameSize.width()) / image.width(),
                                      double(frameSize.height()) / image.height());
        frames.push_back(
            {TestFaces::place(image, {}, frameSize, cover, {0.5, 0.5}, {0.5, 0.5}, nullptr),
             name + QStringLiteral(" (whole frame)")});
        const double inside = 0.6 * frameSize.height() / image.height();
        frames.push_back(
            {TestFaces::place(image, {}, frameSize, inside, {0.5, 0.5}, {0.35, 0.5}, nullptr),
             name + QStringLiteral(" (on grey)")});
    }
    for (int i = 0; i < 16; ++i)
        frames.push_back({textSlide(i), QStringLiteral("text slide %1").arg(i + 1)});
    for (int i = 0; i < 12; ++i)
        frames.push_back({pattern(i), QStringLiteral("pattern %1").arg(i + 1)});
    return frames;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

QString keyFor(const QString &name)
{
    QString key = name.toLower();
    for (QChar &c : key) {
        if (!c.isLetterOrNumber())
            c = QLatin1Char('_');
    }
    return key;
}

struct Candidate
{
    std::unique_ptr<FaceDetector> detector;
    int sampleWidth;
    QString label;
};

QImage sampled(const QImage &frame, int width)
{
    return frame.scaledToWidth(width, Qt::SmoothTransformation);
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    BenchReport report(QStringLiteral("faces"));
    FaceDetectors::useOneCore();
    const std::vector<Frame> frames = makeFaceFrames();
    const std::vector<Faceless> faceless = makeFacelessFrames();
    if (frames.empty() || faceless.size() < 100) {
        report.note(QStringLiteral("test pictures missing from %1 or %2: run ./lumo setup")
                        .arg(TestFaces::directory(), TestFaces::scenesDirectory()));
        return 1;
    }
    int faces = 0;
    int bandFaces[4] {};
    for (const Frame &frame : frames) {
        faces += int(frame.faces.size());
        for (const QRectF &face : frame.faces)
            ++bandFaces[bandOf(face)];
    }

    const QString models = FaceDetectors::modelDirectory();
    const bool all = app.arguments().contains(QStringLiteral("--all"));
    std::vector<Candidate> candidates;
    const std::unique_ptr<FaceDetector> chosen = FaceDetectors::makeDefault();
    candidates.push_back(
        {FaceDetectors::makeDefault(), SmartReframe::sampleWidth, QStringLiteral("default")});
    // What smart reframe used before: BlazeFace front over squares of a 256-pixel sample.
    candidates.push_back(
        {std::make_unique<BlazeFaceDetector>(models, BlazeFaceDetector::Model::front,
                                             BlazeFaceDetector::Tiling::squares),
         256, QStringLiteral("old_default")});
    candidates.push_back(
        {std::make_unique<UltraFaceDetector>(models, UltraFaceDetector::Settings {}),
         SmartReframe::sampleWidth, QString()});
    if (all) {
        // The tilings and thresholds tried, beside the default's.
        const std::tuple<QSize, int, float, bool> variants[] {
            {QSize(426, 320), 64, 0.8f, false}, {QSize(320, 240), 48, 0.8f, false},
            {QSize(384, 288), 64, 0.8f, false}, {QSize(384, 288), 64, 0.8f, true},
            {QSize(480, 360), 64, 0.8f, false}, {QSize(426, 320), 64, 0.9f, false}};
        for (auto [tile, overlap, threshold, confirm] : variants) {
            UltraFaceDetector::Settings settings;
            settings.tile = tile;
            settings.overlap = overlap;
            settings.threshold = threshold;
            settings.tileThreshold = threshold;
            settings.confirm = confirm;
            candidates.push_back({std::make_unique<UltraFaceDetector>(models, settings),
                                  SmartReframe::sampleWidth, QString()});
        }
        candidates.push_back(
            {std::make_unique<BlazeFaceDetector>(models, BlazeFaceDetector::Model::back,
                                                 BlazeFaceDetector::Tiling::letterbox),
             SmartReframe::sampleWidth, QString()});
        candidates.push_back(
            {std::make_unique<CascadeFaceDetector>(FaceDetectors::cascadeFile()), 256, QString()});
    }
    report.note(QStringLiteral("%1 frames of 1920x1080 with %2 faces (%3 / %4 / %5 / %6 by band) "
                               "from %7 photographs; %8 frames without faces; default "
                               "detector: %9; one core")
                    .arg(frames.size())
                    .arg(faces)
                    .arg(bandFaces[0])
                    .arg(bandFaces[1])
                    .arg(bandFaces[2])
                    .arg(bandFaces[3])
                    .arg(TestFaces::photos().size())
                    .arg(faceless.size())
                    .arg(chosen ? chosen->name() : QStringLiteral("none")));

    for (Candidate &candidate : candidates) {
        FaceDetector *detector = candidate.detector.get();
        if (!detector || detector->detect(QImage(8, 8, QImage::Format_RGB32)).size() < 0)
            continue;
        const QString key = (candidate.label.isEmpty() ? keyFor(detector->name()) : candidate.label)
            + QStringLiteral("_");
        report.note(QStringLiteral("%1: %2 on %3-pixel-wide samples")
                        .arg(key.chopped(1), detector->name())
                        .arg(candidate.sampleWidth));
        std::vector<double> times;
        int bandHits[4] {};
        int extraBoxes = 0;
        for (const Frame &frame : frames) {
            const QImage sample = sampled(frame.image, candidate.sampleWidth);
            QElapsedTimer timer;
            timer.start();
            const QList<QRectF> found = detector->detect(sample);
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
            for (const QRectF &face : frame.faces)
                bandHits[bandOf(face)] += TestFaces::hits(found, face);
            for (const QRectF &box : found) {
                extraBoxes += std::none_of(
                    frame.faces.cbegin(), frame.faces.cend(),
                    [&](const QRectF &face) { return TestFaces::hits({box}, face); });
            }
        }
        int falseBoxes = 0;
        int framesWithFalseBoxes = 0;
        QStringList withBoxes;
        for (const Faceless &frame : faceless) {
            const QImage sample = sampled(frame.image, candidate.sampleWidth);
            QElapsedTimer timer;
            timer.start();
            const qsizetype found = detector->detect(sample).size();
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
            falseBoxes += int(found);
            framesWithFalseBoxes += found > 0;
            if (found > 0)
                withBoxes.append(frame.label);
        }
        int hits = 0;
        for (int b = 0; b < 4; ++b) {
            hits += bandHits[b];
            report.add(key + QStringLiteral("recall_") + QLatin1String(bandNames[b]),
                       bandFaces[b] ? 100.0 * bandHits[b] / bandFaces[b] : 0, QStringLiteral("%"));
        }
        report.add(key + QStringLiteral("recall"), 100.0 * hits / faces, QStringLiteral("%"));
        report.add(key + QStringLiteral("false_boxes_per_100_faceless_frames"),
                   100.0 * falseBoxes / double(faceless.size()), QStringLiteral("boxes"));
        report.add(key + QStringLiteral("faceless_frames_with_a_box"), framesWithFalseBoxes,
                   QStringLiteral("frames"));
        if (candidate.label == QLatin1String("default") && !withBoxes.isEmpty())
            report.note(QStringLiteral("boxes without a face: ")
                        + withBoxes.join(QStringLiteral(", ")));
        report.add(key + QStringLiteral("unmatched_boxes_in_face_frames"), extraBoxes,
                   QStringLiteral("boxes"));
        report.add(key + QStringLiteral("median"), median(times), QStringLiteral("ms"));
        report.add(key + QStringLiteral("worst"), *std::max_element(times.begin(), times.end()),
                   QStringLiteral("ms"));
    }
    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json))
        return 1;
    return 0;
}
