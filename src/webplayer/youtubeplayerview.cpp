#include "youtubeplayerview.h"

#include "surface/playersurfaceregistry.h"
#include "youtubehostingview.h"
#include "youtubepage.h"
#include "youtubeplayerregistry.h"

#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>
#include <QWebEnginePage>

YouTubePlayerView::YouTubePlayerView(QWidget *parent)
    : WebPlayerView(parent)
    , m_hostingView(new YouTubeHostingView(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_hostingView);
    setStyleSheet(QStringLiteral("background: black;"));
    registerView();

    // The service's script is loaded by the page itself, so once the page has loaded the
    // script has either run or failed; its player is made later, when the service calls back.
    m_readyCheck = new QTimer(this);
    m_readyCheck->setSingleShot(true);
    m_readyCheck->setInterval(playerReadyTimeoutMs);
    connect(m_readyCheck, &QTimer::timeout, this,
            [this] { checkPlayer(QStringLiteral("typeof player === 'object' && !!player")); });
    connect(m_hostingView, &QWebEngineView::loadFinished, this,
            [this] { checkPlayer(QStringLiteral("typeof YT !== 'undefined'")); });
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

void YouTubePlayerView::setPlayerReadyTimeout(int milliseconds)
{
    m_readyCheck->setInterval(milliseconds);
}

void YouTubePlayerView::checkPlayer(const QString &condition)
{
    const quint64 load = m_loads;
    QPointer<YouTubePlayerView> self(this);
    m_hostingView->page()->runJavaScript(condition, [self, load](const QVariant &result) {
        if (!self || self->m_loads != load || result.toBool())
            return;
        self->m_readyCheck->stop();
        Q_EMIT self->playerUnavailable();
    });
}

void YouTubePlayerView::load(const YouTubeContent &content)
{
    ++m_loads;
    m_readyCheck->start();
    m_loadedContentID = content.id();
    const QString origin = YouTubePage::webOrigin();
    m_hostingView->setHtml(YouTubePage::html(content, origin), YouTubePage::baseUrl(origin));
}

void YouTubePlayerView::registerView()
{
    YouTubePlayerRegistry::shared().setWebView(m_hostingView);
    PlayerSurfaceRegistry::shared().setSurface(m_hostingView);
}
