#pragma once
// The player area: a black stage showing the video (or the web player while web content is
// open), an invitation to open media while nothing is loaded, and the buffering indicator of
// live streams. It keeps the recording registry pointed at the view on show.
#include "portraitdisplaymode.h"

#include <QWidget>
#include <functional>

class BusyIndicator;
class PlayerHostingView;
class PlayerModel;
class QLabel;
class QPushButton;
class WebPlayerView;

class PlayerSurface final : public QWidget
{
    Q_OBJECT

public:
    // Makes the web player's view; it is shown instead of the video while the model holds web
    // content.
    using WebPlayerViewFactory = std::function<WebPlayerView *(QWidget *parent)>;

    explicit PlayerSurface(PlayerModel &model, QWidget *parent = nullptr);

    void setFullScreen(bool fullScreen);
    bool isFullScreen() const { return m_fullScreen; }
    void setPortraitMode(PortraitDisplayMode mode);
    PortraitDisplayMode portraitMode() const { return m_portraitMode; }

    PlayerHostingView *hostingView() const { return m_hostingView; }
    void setWebPlayerViewFactory(WebPlayerViewFactory factory);
    // Whether the web player rather than the video is shown.
    bool showsWebPlayer() const;
    bool showsEmptyState() const;
    bool showsBuffering() const;
    // Sound without a picture: its title, artist and album on the dark background.
    bool showsSoundOnly() const;
    QString soundOnlyText() const;

protected:
    void resizeEvent(QResizeEvent *event) override;
    // The wheel over the picture changes the volume, a step a notch.
    void wheelEvent(QWheelEvent *event) override;

private:
    void updateContent();
    void updateEmptyState();
    void updateBuffering();
    void updateSoundOnly();
    // The sound-only view, the invitation and "Buffering…", in that order, over the picture.
    void stackOverlays();
    QPushButton *makeEmptyState();

    PlayerModel &m_model;
    int m_wheelTurn = 0; // eighths of a degree not yet a whole notch
    bool m_fullScreen = false;
    PortraitDisplayMode m_portraitMode = PortraitDisplayMode::normal;
    PlayerHostingView *m_hostingView = nullptr;
    QWidget *m_soundOnly = nullptr;
    QLabel *m_soundTitle = nullptr;
    QLabel *m_soundDetails = nullptr;
    WebPlayerView *m_webPlayerView = nullptr;
    WebPlayerViewFactory m_webPlayerViewFactory;
    QPushButton *m_emptyState = nullptr;
    QWidget *m_buffering = nullptr;
};
