#pragma once
// Face detection with MediaPipe's BlazeFace networks run by OpenCV's dnn module. Faces keep
// their shape: the frame is letterboxed into the network's square input, or cut into squares.
#include "blazefacedecoder.h"
#include "facedetector.h"

#include <QString>
#include <memory>

namespace cv {
class Mat;
}

class BlazeFaceDetector final : public FaceDetector
{
public:
    enum class Model {
        front, // 128 x 128, for faces close to the camera
        back, // 256 x 256, for smaller faces further away
    };

    enum class Tiling {
        letterbox, // the whole frame in one square, padded with black
        squares, // overlapping squares as tall as the frame: faces stay larger
    };

    static QString fileName(Model model);
    static int inputSize(Model model);

    // Loads the model's file from modelDirectory; isValid() says whether that worked.
    BlazeFaceDetector(const QString &modelDirectory, Model model,
                      Tiling tiling = Tiling::letterbox);
    ~BlazeFaceDetector() override;

    bool isValid() const;
    QList<QRectF> detect(const QImage &frame) override;
    QString name() const override;

    // The parts of a frame of the given size that go through the network, in pixels.
    QList<QRect> tiles(QSize frame) const;

private:
    QList<BlazeFaceDecoder::Detection> detectInTile(const cv::Mat &frame, const QRect &tile);

    struct Network;
    std::unique_ptr<Network> m_network;
    Model m_model;
    Tiling m_tiling;
};
