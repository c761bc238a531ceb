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
// OpenCV's frontal-face cascade from the system's OpenCV data, or empty when it is missing.
QString cascadeFile();

// The detector smart reframe uses: BlazeFace's short-range model over squares of the frame
// (the best recall that fits a sampling step's budget, see lumo-bench-faces), then the Haar
// cascade. Null when neither is installed; smart reframe then finds no faces.
std::unique_ptr<FaceDetector> makeDefault();

// "OpenCV 4.6.0", for the About box.
QString openCvVersion();
// The face models' origins and licences, one line each.
QStringList modelLicences();

} // namespace FaceDetectors
