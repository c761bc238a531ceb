#include "youtubeplayerview.h"

#include "surface/playersurfaceregistry.h"
#include "youtubehostingview.h"
#include "youtubepage.h"
#include "youtubeplayerregistry.h"

#include <QVBoxLayout>

YouTubePlayerView::YouTubePlayerView(QWidget *parent)
    : WebPlayerView(parent)
    , m_hostingView(new YouTubeHostingView(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_hostingView);
    setStyleSheet(QStringLiteral("background: black;"));
    registerView();
}

YouTubePlayerView::~YouTubePlayerView()
{
    m_hostingView->stop();
    YouTubePlayerRegistry::shared().clearIfHolding(m_hostingView);
    PlayerSurfaceRegistry::shared().clearIfHolding(m_hostingView);
}

void YouTubePlayerView::updateContent(const YouTubeContent &content)
{
    registerView();
    if (m_loadedContentID == content.id())
        return;
    load(content);
}

void YouTubePlayerView::load(const YouTubeContent &content)
{
    m_loadedContentID = content.id();
    const QString origin = YouTubePage::webOrigin();
    m_hostingView->setHtml(YouTubePage::html(content, origin), YouTubePage::baseUrl(origin));
}

void YouTubePlayerView::registerView()
{
    YouTubePlayerRegistry::shared().setWebView(m_hostingView);
    PlayerSurfaceRegistry::shared().setSurface(m_hostingView);
}
