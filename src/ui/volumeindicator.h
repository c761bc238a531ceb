#pragma once
// A small level shown over the corner of the picture for a second when the volume or mute
// changes (wheel, keys, the mute button), apart from the notices so that it never replaces one.
#include <QLabel>
#include <QTimer>

class VolumeIndicator final : public QLabel
{
    Q_OBJECT

public:
    static constexpr int shownMs = 1000;
    static constexpr int inset = 14;

    explicit VolumeIndicator(QWidget *parent = nullptr);

    // "Volume 45 %" (the volume rounded to the nearest per cent) or "Muted".
    static QString levelText(double volume, bool muted);

    // Shows the level for a second.
    void showLevel(double volume, bool muted);
    // Places it in the top-right corner of area (the picture, in the parent's coordinates).
    void place(const QRect &area);

private:
    QTimer m_hideTask;
    QRect m_area;
};
