#include "recordingsavedialog.h"

#include "recordingnames.h"

#include <QFileDialog>

namespace RecordingSaveDialog {

std::optional<QString> choose(QWidget *parent,
                              const PlayerRecordingController::SaveRequest &request)
{
    QFileDialog dialog(parent, request.title);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilter(QStringLiteral("MPEG-4 Movie (*.mp4)"));
    dialog.setDefaultSuffix(QStringLiteral("mp4"));
    if (!request.directory.isEmpty())
        dialog.setDirectory(request.directory);
    dialog.selectFile(request.proposedName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return RecordingNames::mp4Path(dialog.selectedFiles().constFirst());
}

} // namespace RecordingSaveDialog
