#pragma once
// Face detection with OpenCV's Haar cascade for frontal faces: the fallback when the BlazeFace
// models are not installed. The frame is downscaled and equalised before the search.
#include "facedetector.h"

#include <memory>

class CascadeFaceDetector final : public FaceDetector
{
public:
    // Frames are searched at most this wide.
    static constexpr int searchWidth = 320;

    explicit CascadeFaceDetector(const QString &cascadeFile);
    ~CascadeFaceDetector() override;

    bool isValid() const;
    QList<QRectF> detect(const QImage &frame) override;
    QString name() const override;

private:
    struct Classifier;
    std::unique_ptr<Classifier> m_classifier;
};
