#include "filedialogchooser.h"

#include <QFileDialog>
#include <QPointer>

FileChooser fileDialogChooser(QWidget *parent)
{
    return [owner = QPointer<QWidget>(parent)](
               const OpenPanelRequest &request) -> std::optional<QString> {
        QFileDialog dialog(owner, request.title);
        dialog.setFileMode(QFileDialog::ExistingFile);
        dialog.setAcceptMode(QFileDialog::AcceptOpen);
        dialog.setNameFilters(request.nameFilters);
        if (!request.confirmLabel.isEmpty())
            dialog.setLabelText(QFileDialog::Accept, request.confirmLabel);
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
            return std::nullopt;
        return dialog.selectedFiles().constFirst();
    };
}
