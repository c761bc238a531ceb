#pragma once
// The embedded web player: a YouTubeHostingView that loads the generated page for the content it
// is given. The page is rebuilt only when the content's identity changes, so a playing video is
// not restarted by other updates. It registers its view for transport commands and recording,
// and reports a page whose player never came (the service's script failed or never called).
#include "surface/webplayerview.h"

#include <optional>

class QTimer;

class YouTubeHostingView;

class YouTubePlayerView final : public WebPlayerView
{
    Q_OBJECT

public:
    explicit YouTubePlayerView(QWidget *parent = nullptr);
    // Stops loading and withdraws the view from both registries where it is still registered.
    ~YouTubePlayerView() override;

    // How long a loaded page may take to make its player.
    static constexpr int playerReadyTimeoutMs = 15'000;

    void updateContent(const YouTubeContent &content) override;
    void setPlayerReadyTimeout(int milliseconds);

    YouTubeHostingView *hostingView() const { return m_hostingView; }
    // The identity of the content whose page is loaded; nothing before the first load.
    const std::optional<QString> &loadedContentID() const { return m_loadedContentID; }

private:
    void load(const YouTubeContent &content);
    void registerView();
    // Asks the page whether the condition holds and reports the player missing if it does not.
    void checkPlayer(const QString &condition);

    YouTubeHostingView *m_hostingView = nullptr;
    QTimer *m_readyCheck = nullptr;
    quint64 m_loads = 0; // pages loaded so far; a check answers for one page only
    std::optional<QString> m_loadedContentID;
};
