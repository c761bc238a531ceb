#include "youtubehostingview.h"

#include "model/playernotifications.h"

#include <QChildEvent>
#include <QMouseEvent>
#include <QWebEngineSettings>

YouTubeHostingView::YouTubeHostingView(QWidget *parent)
    : QWebEngineView(parent)
{
    // The page starts the player by itself once the service's script is ready.
    settings()->setAttribute(QWebEngineSettings::PlaybackRequiresUserGesture, false);
    // A dropped file goes to the window, which plays it; the page must not open it.
    setAcceptDrops(false);
}

bool YouTubeHostingView::event(QEvent *event)
{
    // The pointer events go to the child widget Chromium draws into, not to the view itself, so
    // the view watches that child.
    if (event->type() == QEvent::ChildAdded) {
        QObject *child = static_cast<QChildEvent *>(event)->child();
        if (child->isWidgetType())
            child->installEventFilter(this);
    }
    return QWebEngineView::event(event);
}

bool YouTubeHostingView::eventFilter(QObject *watched, QEvent *event)
{
    // The second press of a double click arrives as its own event type and posts nothing.
    if (event->type() == QEvent::MouseButtonPress
        && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        QWidget *topLevel = window();
        Q_EMIT PlayerNotifications::shared().playerSurfaceClicked(
            topLevel ? topLevel->windowHandle() : nullptr);
    }
    return QWebEngineView::eventFilter(watched, event);
}

void YouTubeHostingView::setPictureReceiver(PictureReceiver receiver)
{
    m_pictureReceiver = std::move(receiver);
    if (!m_pictureReceiver) {
        delete m_pictureTimer;
        m_pictureTimer = nullptr;
        return;
    }
    if (!m_pictureTimer) {
        m_pictureTimer = new QTimer(this);
        m_pictureTimer->setTimerType(Qt::PreciseTimer);
        m_pictureTimer->setInterval(1000 / 30);
        connect(m_pictureTimer, &QTimer::timeout, this, &YouTubeHostingView::takePicture);
        m_pictureTimer->start();
    }
    takePicture();
}

void YouTubeHostingView::takePicture()
{
    if (!m_pictureReceiver || !isVisible())
        return;
    const auto drawnAt = std::chrono::steady_clock::now();
    const QImage image = grab().toImage();
    if (!image.isNull())
        m_pictureReceiver(CapturedPicture {image, false, drawnAt});
}
