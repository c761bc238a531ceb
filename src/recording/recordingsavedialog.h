#pragma once
// The platform's save dialog for a recording: MPEG-4 files only, new folders allowed.
#include "playerrecordingcontroller.h"

namespace RecordingSaveDialog {

std::optional<QString> choose(QWidget *parent,
                              const PlayerRecordingController::SaveRequest &request);

} // namespace RecordingSaveDialog
