#include "youtubeplayerregistry.h"

#include "model/transportscripts.h"

#include <QCoreApplication>
#include <QWebEnginePage>

YouTubePlayerRegistry &YouTubePlayerRegistry::shared()
{
    static YouTubePlayerRegistry registry;
    return registry;
}

void YouTubePlayerRegistry::clearIfHolding(const QWebEngineView *view)
{
    if (m_webView == view)
        m_webView = nullptr;
}

void YouTubePlayerRegistry::evaluate(const QString &script)
{
    // The application object is the context: the call dies with it, never with a view.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [script] {
            if (QWebEngineView *view = shared().webView())
                view->page()->runJavaScript(script);
        },
        Qt::QueuedConnection);
}

void YouTubePlayerRegistry::setMuted(bool muted)
{
    evaluate(TransportScripts::setMuted(muted));
}
