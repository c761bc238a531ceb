#pragma once
// The playing channel's programmes over the bottom of the picture: what is on now, with a bar of
// how far into it, and what comes next. Shown for a few seconds when the channel starts and when
// the pointer moves over the picture; it takes no clicks.
#include "guide/programmeguide.h"

#include <QStringList>
#include <QTimer>
#include <QWidget>

class NowNextOverlay final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int shownMs = 4000;
    static constexpr int inset = 14;

    explicit NowNextOverlay(QWidget *parent = nullptr);

    // What the overlay shows at moment; with neither programme it stays hidden.
    void setProgrammes(const ProgrammeGuide::NowNext &programmes, qint64 moment);
    // Shows the overlay for shownMs, when it has something to show.
    void reveal();
    // Places the overlay at the bottom left of the area (the picture's, in the parent).
    void place(const QRect &area);

    // "Now  20:00–21:00  News at Eight" and "Next  21:00–22:00  Nine", those present.
    QStringList lines() const;
    double progress() const { return m_progress; }
    void setShownDuration(int ms) { m_hideTask.setInterval(ms); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_now;
    QString m_next;
    double m_progress = 0;
    QRect m_area;
    QTimer m_hideTask;
};
