#include "facedetectors.h"

#include "blazefacedetector.h"
#include "cascadefacedetector.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace FaceDetectors {

QString modelDirectory()
{
    const QString configured = qEnvironmentVariable(modelDirectoryVariable);
    if (!configured.isEmpty())
        return configured;
    return QDir(QCoreApplication::applicationDirPath())
        .absoluteFilePath(QStringLiteral("../share/LumoMediaPlayer/face-models"));
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
    auto blazeFace = std::make_unique<BlazeFaceDetector>(
        modelDirectory(), BlazeFaceDetector::Model::front, BlazeFaceDetector::Tiling::squares);
    if (blazeFace->isValid())
        return blazeFace;
    auto cascade = std::make_unique<CascadeFaceDetector>(cascadeFile());
    if (cascade->isValid())
        return cascade;
    return nullptr;
}

} // namespace FaceDetectors
