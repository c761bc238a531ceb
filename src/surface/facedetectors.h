#pragma once
// Where the face models and cascades are found, and which detector smart reframe uses.
#include "facedetector.h"

#include <QString>
#include <QStringList>
#include <memory>

namespace FaceDetectors {

// Overrides where the BlazeFace models are looked for.
inline constexpr char modelDirectoryVariable[] = "LUMO_FACE_MODELS";

// The folder holding the BlazeFace models: $LUMO_FACE_MODELS, otherwise
// share/LumoMediaPlayer/face-models beside the program's folder.
QString modelDirectory();
// Where the models are installed for the programs of a bin folder.
inline QString modelDirectoryBeside(const QString &programFolder)
{
    return programFolder + QStringLiteral("/../share/LumoMediaPlayer/face-models");
}
// OpenCV's frontal-face cascade from the system's OpenCV data, or empty when it is missing.
QString cascadeFile();

// The detector smart reframe uses: UltraFace over overlapping tiles of the sample and over the
// whole of it (the best recall within a sampling step's budget, see lumo-bench-faces), else
// BlazeFace's short-range model, else the Haar cascade. Null when none is installed; smart
// reframe then finds no faces.
std::unique_ptr<FaceDetector> makeDefault();

// A picture as smart reframe searches it: scaled down with area averaging to
// SmartReframe::sampleSize, as 32-bit BGRx. picture holds B, G, R, x bytes (Format_RGB32 or
// mpv's bgr0); a picture already small enough is copied as it is.
QImage sampleOf(const QImage &picture);

// Detection runs on one core, so that it never takes the processor from playback and drawing.
// Applies to every detector in the process.
void useOneCore();

// "OpenCV 4.6.0", for the About box.
QString openCvVersion();
// The face models' origins and licences, one line each.
QStringList modelLicences();

} // namespace FaceDetectors
