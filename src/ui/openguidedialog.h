#pragma once
// "Open Guide…": a programme guide's address or file, typed or chosen with the open panel, added
// to the guides of the playlist.
#include <QDialog>

class PlayerModel;
class QLineEdit;
class QPushButton;

class OpenGuideDialog final : public QDialog
{
    Q_OBJECT

public:
    explicit OpenGuideDialog(PlayerModel &model, QWidget *parent = nullptr);

    QLineEdit *addressField() const { return m_address; }
    QPushButton *chooseFileButton() const { return m_chooseFile; }
    QPushButton *openButton() const { return m_open; }

private:
    PlayerModel &m_model;
    QLineEdit *m_address = nullptr;
    QPushButton *m_chooseFile = nullptr;
    QPushButton *m_open = nullptr;
};
