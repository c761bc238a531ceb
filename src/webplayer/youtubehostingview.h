#pragma once
// The web view that shows the generated player page. A single click tells the window the player
// area was clicked and still reaches the page; its whole area is what a recording captures.
#include "surface/playerrecordingsurface.h"

#include <QTimer>
#include <QWebEngineView>

class YouTubeHostingView final : public QWebEngineView, public PlayerRecordingSurface
{
    Q_OBJECT

public:
    explicit YouTubeHostingView(QWidget *parent = nullptr);

    QWidget *recordingView() override { return this; }
    QRectF recordingRectInView() const override { return QRectF(rect()); }
    // Chromium composes the page out of reach of the widget tree's paint, so the picture is
    // taken from the composed view thirty times a second while a recording runs.
    void setPictureReceiver(PictureReceiver receiver) override;

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void takePicture();

    PictureReceiver m_pictureReceiver;
    QTimer *m_pictureTimer = nullptr;
};
