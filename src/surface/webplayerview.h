#pragma once
// The web player's view as the player surface sees it: made when web content opens, told the
// content on every update of the surface, and deleted when the video returns.
#include "sources/youtubecontent.h"

#include <QWidget>

class WebPlayerView : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    // Called right after the view is made and again on every update of the surface.
    virtual void updateContent(const YouTubeContent &content) = 0;

Q_SIGNALS:
    // The page of the current content could not make its player (no network, say).
    void playerUnavailable();
};
