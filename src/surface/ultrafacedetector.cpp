#include "ultrafacedetector.h"

#include <QDir>
#include <QFile>
#include <opencv2/dnn.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

struct UltraFaceDetector::Network
{
    cv::dnn::Net net;
    std::vector<cv::String> outputs; // "boxes", then "scores"
    cv::Mat canvas; // the network's input picture, reused between passes
};

namespace {

// Faces found in one pass overlapping by more than this (intersection over union) are one.
constexpr double passOverlap = 0.3;
// A face found only in a tile is kept when the closer look scores it at least this (chosen with
// lumo-bench-faces: it takes most boxes on frames without faces away and few faces).
constexpr float confirmThreshold = 0.95f;

// The network's input from a 320 x 240 BGR picture: planar RGB, (value - 127) / 128.
cv::Mat blobFrom(const cv::Mat &canvas)
{
    return cv::dnn::blobFromImage(canvas, 1.0 / 128.0, cv::Size(), cv::Scalar(127, 127, 127), true,
                                  false, CV_32F);
}

bool runsOnBlank(cv::dnn::Net &net, const std::vector<cv::String> &outputs)
{
    const cv::Mat blank(UltraFaceDetector::inputSize.height(), UltraFaceDetector::inputSize.width(),
                        CV_8UC3, cv::Scalar::all(127));
    std::vector<cv::Mat> results;
    try {
        net.setInput(blobFrom(blank));
        net.forward(results, outputs);
    } catch (const cv::Exception &) {
        return false;
    }
    return results.size() == 2 && results[0].total() * 2 == results[1].total() * 4;
}

// Hard suppression within one pass: of overlapping boxes the best scoring stays.
QList<FaceTiles::ScoredFace> suppress(QList<FaceTiles::ScoredFace> faces)
{
    std::stable_sort(faces.begin(), faces.end(),
                     [](const auto &a, const auto &b) { return a.score > b.score; });
    QList<FaceTiles::ScoredFace> kept;
    for (const FaceTiles::ScoredFace &face : std::as_const(faces)) {
        const bool seen = std::any_of(kept.cbegin(), kept.cend(), [&](const auto &k) {
            const QRectF inner = k.box.intersected(face.box);
            const double innerArea = inner.width() * inner.height();
            const double unionArea
                = k.box.width() * k.box.height() + face.box.width() * face.box.height() - innerArea;
            return unionArea > 0 && innerArea / unionArea > passOverlap;
        });
        if (!seen)
            kept.append(face);
    }
    return kept;
}

} // namespace

QString UltraFaceDetector::fileName()
{
    return QStringLiteral("fr_detect.onnx");
}

UltraFaceDetector::Settings UltraFaceDetector::defaultSettings()
{
    Settings settings;
    settings.tile = QSize(426, 320);
    settings.overlap = 64;
    settings.wholeFrame = true;
    settings.threshold = 0.8f;
    settings.tileThreshold = 0.7f;
    settings.confirm = true;
    return settings;
}

UltraFaceDetector::UltraFaceDetector(const QString &modelDirectory, const Settings &settings)
    : m_settings(settings)
{
    const QString path = QDir(modelDirectory).filePath(fileName());
    if (!QFile::exists(path))
        return;
    try {
        auto network = std::make_unique<Network>();
        network->net = cv::dnn::readNetFromONNX(QFile::encodeName(path).toStdString());
        if (network->net.empty())
            return;
        network->outputs = network->net.getUnconnectedOutLayersNames();
        std::sort(network->outputs.begin(), network->outputs.end());
        if (network->outputs.size() != 2 || !runsOnBlank(network->net, network->outputs))
            return;
        m_network = std::move(network);
    } catch (const cv::Exception &) {
        // A damaged file: the caller falls back to another detector.
    }
}

UltraFaceDetector::~UltraFaceDetector() = default;

bool UltraFaceDetector::isValid() const
{
    return m_network != nullptr;
}

QString UltraFaceDetector::name() const
{
    if (m_settings.tile.isEmpty())
        return QStringLiteral("UltraFace 320");
    return QStringLiteral("UltraFace 320 tiles %1x%2 at %3%4%5")
        .arg(m_settings.tile.width())
        .arg(m_settings.tile.height())
        .arg(double(m_settings.tileThreshold))
        .arg(m_settings.confirm ? QStringLiteral(" confirmed at %1").arg(double(confirmThreshold))
                                : QString())
        .arg(m_settings.wholeFrame
                 ? QStringLiteral(", whole at %1").arg(double(m_settings.threshold))
                 : QString());
}

QList<QRect> UltraFaceDetector::passes(QSize frame) const
{
    if (frame.isEmpty())
        return {};
    QList<QRect> result;
    const QRect whole(QPoint(0, 0), frame);
    if (m_settings.tile.isEmpty())
        return {whole};
    if (m_settings.wholeFrame)
        result.append(whole);
    const QList<QRect> tiles = FaceTiles::layout(frame, m_settings.tile, m_settings.overlap);
    // A frame that is one tile needs no second look.
    if (!(m_settings.wholeFrame && tiles.size() == 1 && tiles.first() == whole))
        result += tiles;
    return result;
}

QList<QRectF> UltraFaceDetector::detect(const QImage &frame)
{
    if (!m_network || frame.isNull() || frame.depth() != 32 || frame.width() < 2
        || frame.height() < 2)
        return {};
    const cv::Mat bgrx(frame.height(), frame.width(), CV_8UC4, const_cast<uchar *>(frame.bits()),
                       size_t(frame.bytesPerLine()));
    QList<FaceTiles::ScoredFace> found;
    QList<FaceTiles::ScoredFace> fromTiles;
    const QRect whole(QPoint(0, 0), frame.size());
    for (const QRect &part : passes(frame.size())) {
        const float threshold = part == whole ? m_settings.threshold : m_settings.tileThreshold;
        for (const FaceTiles::ScoredFace &face : detectIn(bgrx, part, threshold)) {
            if (part == whole)
                found.append(face);
            // A face cut by a seam is whole in a neighbouring tile.
            else if (!FaceTiles::touchesInnerEdge(face.box, part, frame.size()))
                fromTiles.append(face);
        }
    }
    for (const FaceTiles::ScoredFace &face : FaceTiles::merge(fromTiles)) {
        const bool seenWhole = std::any_of(found.cbegin(), found.cend(), [&](const auto &f) {
            return FaceTiles::overlapOfSmaller(f.box, face.box) > 0.5;
        });
        if (seenWhole || !m_settings.confirm || confirmed(bgrx, face.box))
            found.append(face);
    }
    QList<QRectF> faces;
    for (const FaceTiles::ScoredFace &face : FaceTiles::merge(found)) {
        const QRectF box = face.box.intersected(QRectF(whole));
        if (!box.isEmpty()) {
            faces.append(QRectF(box.x() / frame.width(), box.y() / frame.height(),
                                box.width() / frame.width(), box.height() / frame.height()));
        }
    }
    return faces;
}

bool UltraFaceDetector::confirmed(const cv::Mat &frame, const QRectF &face)
{
    // The face a fifth of the width of a 4:3 view around it, no smaller than 128 x 96: for a
    // small face, close to twice the scale it was found at.
    const double width = std::max(face.width() * 5, 128.0);
    const QRectF around(face.center() - QPointF(width / 2, width * 3 / 8),
                        QSizeF(width, width * 3 / 4));
    const QRect part = around.toAlignedRect().intersected(QRect(0, 0, frame.cols, frame.rows));
    if (part.width() < 2 || part.height() < 2)
        return false;
    const QList<FaceTiles::ScoredFace> again = detectIn(frame, part, confirmThreshold);
    return std::any_of(again.cbegin(), again.cend(), [&](const FaceTiles::ScoredFace &f) {
        return FaceTiles::overlapOfSmaller(f.box, face) > 0.5;
    });
}

QList<FaceTiles::ScoredFace> UltraFaceDetector::detectIn(const cv::Mat &frame, const QRect &part,
                                                         float threshold)
{
    // The part keeps its shape: scaled to fit the input, the rest mid-grey (zero for the network).
    const int inputWidth = inputSize.width(), inputHeight = inputSize.height();
    const double scale
        = std::min(double(inputWidth) / part.width(), double(inputHeight) / part.height());
    const int width = std::clamp(int(std::lround(part.width() * scale)), 1, inputWidth);
    const int height = std::clamp(int(std::lround(part.height() * scale)), 1, inputHeight);
    cv::Mat &canvas = m_network->canvas;
    canvas.create(inputHeight, inputWidth, CV_8UC3);
    canvas.setTo(cv::Scalar::all(127));
    const cv::Mat region = frame(cv::Rect(part.x(), part.y(), part.width(), part.height()));
    cv::Mat resized;
    cv::resize(region, resized, cv::Size(width, height), 0, 0,
               scale < 1 ? cv::INTER_AREA : cv::INTER_LINEAR);
    cv::cvtColor(resized, canvas(cv::Rect(0, 0, width, height)), cv::COLOR_BGRA2BGR);

    std::vector<cv::Mat> outputs;
    try {
        m_network->net.setInput(blobFrom(canvas));
        m_network->net.forward(outputs, m_network->outputs);
    } catch (const cv::Exception &) {
        return {};
    }
    if (outputs.size() != 2)
        return {};
    const cv::Mat &boxes = outputs[0];
    const cv::Mat &scores = outputs[1];
    const size_t anchors = scores.total() / 2;
    if (boxes.total() != anchors * 4)
        return {};
    const float *box = boxes.ptr<float>();
    const float *score = scores.ptr<float>();
    QList<FaceTiles::ScoredFace> found;
    for (size_t i = 0; i < anchors; ++i) {
        const float s = score[i * 2 + 1];
        if (!(s >= threshold))
            continue;
        const float *b = box + i * 4;
        // Corners on the input, 0...1, to frame pixels.
        const QRectF onInput(QPointF(b[0] * inputWidth, b[1] * inputHeight),
                             QPointF(b[2] * inputWidth, b[3] * inputHeight));
        const QRectF inFrame(part.x() + onInput.x() / scale, part.y() + onInput.y() / scale,
                             onInput.width() / scale, onInput.height() / scale);
        if (inFrame.width() > 0 && inFrame.height() > 0)
            found.append({inFrame, s});
    }
    return suppress(found);
}
