#pragma once
// Face detection with the UltraFace RFB-320 network (320 x 240 input, boxes decoded inside the
// network) run by OpenCV's dnn module. Small faces are found by running it over overlapping
// tiles of the frame as well as over the whole frame, and merging what each pass found.
#include "facedetector.h"
#include "facetiles.h"

#include <QSize>
#include <QString>
#include <memory>

namespace cv {
class Mat;
}

class UltraFaceDetector final : public FaceDetector
{
public:
    struct Settings
    {
        // Tiles in frame pixels; an empty size runs the whole frame only.
        QSize tile;
        // Pixels neighbouring tiles share at least: faces up to this wide on a seam are whole
        // in one tile.
        int overlap = 0;
        // Whether the whole frame is searched too, for faces larger than a tile's overlap.
        bool wholeFrame = true;
        // Faces scoring at least this in the whole frame are kept...
        float threshold = 0.8f;
        // ...and at least this in a tile: small faces score lower.
        float tileThreshold = 0.8f;
        // Whether a face found only in a tile is looked at again, closer, and kept only when
        // the network finds it there too: textures that pass for a face at one scale rarely do
        // at another.
        bool confirm = false;
    };

    static QString fileName();
    static constexpr QSize inputSize {320, 240};
    // What smart reframe uses on its 960-pixel-wide samples: chosen by lumo-bench-faces.
    static Settings defaultSettings();

    // Loads the model from modelDirectory; isValid() says whether that worked.
    UltraFaceDetector(const QString &modelDirectory, const Settings &settings = defaultSettings());
    ~UltraFaceDetector() override;

    bool isValid() const;
    QList<QRectF> detect(const QImage &frame) override;
    QString name() const override;
    const Settings &settings() const { return m_settings; }

    // The parts of a frame of the given size that go through the network, in pixels: the
    // whole frame first when it is searched.
    QList<QRect> passes(QSize frame) const;

private:
    QList<FaceTiles::ScoredFace> detectIn(const cv::Mat &frame, const QRect &part, float threshold);
    bool confirmed(const cv::Mat &frame, const QRectF &face);

    struct Network;
    std::unique_ptr<Network> m_network;
    Settings m_settings;
};
