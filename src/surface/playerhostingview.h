#pragma once
// The view that shows the media player's video: mpv draws each frame into this OpenGL widget
// through its render API, letterboxed on black.
#include <QOpenGLWidget>
#include <QPointer>
#include <memory>

class MpvPlayer;
class MpvRenderContext;

class PlayerHostingView final : public QOpenGLWidget
{
    Q_OBJECT

public:
    explicit PlayerHostingView(QWidget *parent = nullptr);
    ~PlayerHostingView() override;

    // The player whose video this view draws; the view follows it until either goes away.
    void setPlayer(MpvPlayer *player);
    // True once the view can draw video (its GL context and render context exist).
    bool isReady() const;

Q_SIGNALS:
    void ready();
    // A paint drew a frame that mpv had newly decoded.
    void frameDrawn();

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void createRenderContext();
    void releaseRenderContext();

    QPointer<MpvPlayer> m_player;
    std::unique_ptr<MpvRenderContext> m_renderContext;
};
