#pragma once
// The small floating panel shown while a recording runs: the elapsed time and a stop button, in
// the top-right corner of the player's screen's available area, above every window (full-screen
// players included) and shown without taking the focus. Dragging its background moves it.
#include <QWidget>

class QLabel;
class QScreen;
class QPushButton;

class RecordingPanel final : public QWidget
{
    Q_OBJECT

public:
    // Wider only when the desktop's fonts need it for the timer and the button side by side.
    static constexpr QSize panelSize {210, 48};
    // From the top and right edges of the available screen area.
    static constexpr int screenInset = 18;

    explicit RecordingPanel(QWidget *parent = nullptr);

    QLabel *durationLabel() const { return m_label; }
    QPushButton *stopButton() const { return m_stop; }
    // Moves the panel into the corner of screen and shows it, without activating it; with no
    // screen it keeps its place.
    void present(QScreen *screen);
    // The place of a panel of the given width on a screen whose available area is given.
    static QPoint placement(const QRect &availableArea, int width = panelSize.width());

Q_SIGNALS:
    void stopRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    QLabel *m_label = nullptr;
    QPushButton *m_stop = nullptr;
    QPoint m_dragOffset;
};
