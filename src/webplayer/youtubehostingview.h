#pragma once
// The web view that shows the generated player page. A single click tells the window the player
// area was clicked and still reaches the page; its whole area is what a recording captures.
#include "surface/playerrecordingsurface.h"

#include <QWebEngineView>

class YouTubeHostingView final : public QWebEngineView, public PlayerRecordingSurface
{
    Q_OBJECT

public:
    explicit YouTubeHostingView(QWidget *parent = nullptr);

    QWidget *recordingView() override { return this; }
    QRectF recordingRectInView() const override { return QRectF(rect()); }

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
};
