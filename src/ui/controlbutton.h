#pragma once
// A control bar button: one symbol on a small rounded face, lighter normally and darker while
// selected. Prominent buttons are wider and draw a larger symbol.
#include <QAbstractButton>

class ControlButton final : public QAbstractButton
{
    Q_OBJECT

public:
    enum class Look { plain, prominent, record };

    ControlButton(Look look, QWidget *parent = nullptr);

    QString symbol() const { return m_symbol; }
    void setSymbol(const QString &symbol);
    bool isSelected() const { return m_selected; }
    void setSelected(bool selected);
    // The record face's outline is stronger while a recording runs.
    void setRecordingLook(bool recording);
    bool hasRecordingLook() const { return m_recordingLook; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Look m_look;
    QString m_symbol;
    bool m_selected = false;
    bool m_recordingLook = false;
};
