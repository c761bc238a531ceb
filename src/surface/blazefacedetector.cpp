#include "blazefacedetector.h"

#include "blazefacedecoder.h"

#include <QDir>
#include <QFile>
#include <opencv2/dnn.hpp>
#include <opencv2/imgproc.hpp>

struct BlazeFaceDetector::Network
{
    cv::dnn::Net net;
    std::vector<cv::String> outputs;
    cv::Mat square; // the letterboxed input, reused between frames
};

QString BlazeFaceDetector::fileName(Model model)
{
    return model == Model::front ? QStringLiteral("face_detection_front_128x128_barracuda.onnx")
                                 : QStringLiteral("face_detection_back_256x256_barracuda.onnx");
}

int BlazeFaceDetector::inputSize(Model model)
{
    return model == Model::front ? 128 : 256;
}

namespace {

// Runs the network once on a blank picture; false when OpenCV cannot run it.
bool runsOnBlank(cv::dnn::Net &net, const std::vector<cv::String> &outputs, int size)
{
    const int shape[] {1, size, size, 3};
    cv::Mat blank(4, shape, CV_32F, cv::Scalar::all(-1));
    std::vector<cv::Mat> results;
    try {
        net.setInput(blank);
        net.forward(results, outputs);
    } catch (const cv::Exception &) {
        return false;
    }
    return results.size() == outputs.size();
}

} // namespace

BlazeFaceDetector::BlazeFaceDetector(const QString &modelDirectory, Model model, Tiling tiling)
    : m_model(model)
    , m_tiling(tiling)
{
    const QString path = QDir(modelDirectory).filePath(fileName(model));
    if (!QFile::exists(path))
        return;
    const std::string file = QFile::encodeName(path).toStdString();
    // OpenCV 4.10 fuses the networks' channel padding into the pooling beside it and then
    // refuses its own result in forward(); unfused, both networks run as on OpenCV 4.6. A net
    // whose forward() failed is left half-prepared, so the unfused one is read afresh.
    for (const bool fused : {true, false}) {
        try {
            auto network = std::make_unique<Network>();
            network->net = cv::dnn::readNetFromONNX(file);
            if (network->net.empty())
                return;
            // The networks' four outputs: scores of the 16 x 16 map, of the 8 x 8 map, then the
            // boxes of each.
            network->outputs = network->net.getUnconnectedOutLayersNames();
            std::sort(network->outputs.begin(), network->outputs.end());
            if (network->outputs.size() != 4)
                return;
            network->net.enableFusion(fused);
            if (runsOnBlank(network->net, network->outputs, inputSize(model))) {
                m_network = std::move(network);
                return;
            }
        } catch (const cv::Exception &) {
            // A damaged file: the caller falls back to another detector.
            return;
        }
    }
    qWarning("face detection: OpenCV %s cannot run %s; using another detector", CV_VERSION,
             qPrintable(fileName(model)));
}

BlazeFaceDetector::~BlazeFaceDetector() = default;

bool BlazeFaceDetector::isValid() const
{
    return m_network != nullptr;
}

QString BlazeFaceDetector::name() const
{
    return (m_model == Model::front ? QStringLiteral("BlazeFace front 128")
                                    : QStringLiteral("BlazeFace back 256"))
        + (m_tiling == Tiling::squares ? QStringLiteral(" squares") : QString());
}

QList<QRectF> BlazeFaceDetector::detect(const QImage &frame)
{
    if (!m_network || frame.isNull() || frame.depth() != 32)
        return {};
    const cv::Mat bgrx(frame.height(), frame.width(), CV_8UC4, const_cast<uchar *>(frame.bits()),
                       size_t(frame.bytesPerLine()));
    QList<BlazeFaceDecoder::Detection> found;
    for (const QRect &tile : tiles(frame.size()))
        found += detectInTile(bgrx, tile);
    // Tiles overlap: merge what two of them found, best score first.
    std::stable_sort(found.begin(), found.end(),
                     [](const auto &a, const auto &b) { return a.score > b.score; });
    if (m_tiling == Tiling::squares)
        found = BlazeFaceDecoder::suppress(found);
    QList<QRectF> faces;
    faces.reserve(found.size());
    for (const BlazeFaceDecoder::Detection &detection : found) {
        const QRectF &box = detection.box;
        faces.append(QRectF(box.x() / frame.width(), box.y() / frame.height(),
                            box.width() / frame.width(), box.height() / frame.height()));
    }
    return faces;
}

QList<QRect> BlazeFaceDetector::tiles(QSize frame) const
{
    const int side = std::min(frame.width(), frame.height());
    if (m_tiling == Tiling::letterbox || side <= 0)
        return {QRect(QPoint(0, 0), frame)};
    // Squares as tall (or wide) as the frame, spread evenly from one edge to the other.
    const int length = std::max(frame.width(), frame.height());
    const int count = (length + side - 1) / side;
    QList<QRect> result;
    for (int i = 0; i < count; ++i) {
        const int offset = count == 1 ? 0 : (length - side) * i / (count - 1);
        result.append(frame.width() >= frame.height() ? QRect(offset, 0, side, side)
                                                      : QRect(0, offset, side, side));
    }
    return result;
}

QList<BlazeFaceDecoder::Detection> BlazeFaceDetector::detectInTile(const cv::Mat &frame,
                                                                   const QRect &tile)
{
    const int size = inputSize(m_model);
    const double scale = double(size) / std::max(tile.width(), tile.height());
    const int width = std::max(1, int(std::lround(tile.width() * scale)));
    const int height = std::max(1, int(std::lround(tile.height() * scale)));
    const int padX = (size - width) / 2;
    const int padY = (size - height) / 2;

    const cv::Mat region = frame(cv::Rect(tile.x(), tile.y(), tile.width(), tile.height()));
    cv::Mat resized;
    cv::resize(region, resized, cv::Size(width, height), 0, 0, cv::INTER_AREA);
    cv::Mat rgb;
    cv::cvtColor(resized, rgb, cv::COLOR_BGRA2RGB);
    cv::Mat &square = m_network->square;
    square.create(size, size, CV_32FC3);
    square.setTo(cv::Scalar::all(-1)); // black, on the network's -1...1 scale
    rgb.convertTo(square(cv::Rect(padX, padY, width, height)), CV_32F, 2.0 / 255.0, -1.0);

    const int shape[] {1, size, size, 3};
    std::vector<cv::Mat> outputs;
    try {
        m_network->net.setInput(cv::Mat(4, shape, CV_32F, square.data));
        m_network->net.forward(outputs, m_network->outputs);
    } catch (const cv::Exception &) {
        return {};
    }
    if (outputs.size() != 4)
        return {};
    std::vector<float> scores;
    std::vector<float> boxes;
    for (size_t map : {0, 1}) {
        const cv::Mat &s = outputs[map];
        const cv::Mat &b = outputs[map + 2];
        scores.insert(scores.end(), s.ptr<float>(), s.ptr<float>() + s.total());
        boxes.insert(boxes.end(), b.ptr<float>(), b.ptr<float>() + b.total());
    }
    QList<BlazeFaceDecoder::Detection> found
        = BlazeFaceDecoder::suppress(BlazeFaceDecoder::decode(scores, boxes, size));
    // From the network's square to frame pixels.
    for (BlazeFaceDecoder::Detection &detection : found) {
        const QRectF box = detection.box;
        detection.box = QRectF(tile.x() + (box.x() * size - padX) / scale,
                               tile.y() + (box.y() * size - padY) / scale,
                               box.width() * size / scale, box.height() * size / scale);
    }
    return found;
}
