#pragma once
// The embedded web player: a YouTubeHostingView that loads the generated page for the content it
// is given. The page is rebuilt only when the content's identity changes, so a playing video is
// not restarted by other updates. It registers its view for transport commands and recording.
#include "surface/webplayerview.h"

#include <optional>

class YouTubeHostingView;

class YouTubePlayerView final : public WebPlayerView
{
    Q_OBJECT

public:
    explicit YouTubePlayerView(QWidget *parent = nullptr);
    // Stops loading and withdraws the view from both registries where it is still registered.
    ~YouTubePlayerView() override;

    void updateContent(const YouTubeContent &content) override;

    YouTubeHostingView *hostingView() const { return m_hostingView; }
    // The identity of the content whose page is loaded; nothing before the first load.
    const std::optional<QString> &loadedContentID() const { return m_loadedContentID; }

private:
    void load(const YouTubeContent &content);
    void registerView();

    YouTubeHostingView *m_hostingView = nullptr;
    std::optional<QString> m_loadedContentID;
};
