#pragma once
// A player window for recording tests: the video view over a 40-pixel strip, as the real window
// has its control bar, playing a clip through libmpv with its sound on the private sound server.
#include "model/mpvplayer.h"
#include "surface/playerhostingview.h"

#include <QWidget>
#include <memory>

class RecordingStage
{
public:
    static constexpr QSize viewSize {640, 360};
    static constexpr int stripHeight = 40;

    explicit RecordingStage(QSize size = viewSize);
    ~RecordingStage();

    // Shows the window, makes it the active one and plays file until its picture is drawn.
    bool play(const QString &file);

    QWidget *window() const { return m_window.get(); }
    PlayerHostingView *view() const { return m_view; }
    MpvPlayer *player() const { return m_player.get(); }

private:
    std::unique_ptr<MpvPlayer> m_player;
    std::unique_ptr<QWidget> m_window;
    PlayerHostingView *m_view = nullptr;
};
