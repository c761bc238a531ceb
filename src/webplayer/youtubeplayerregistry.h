#pragma once
// The process-wide holder of the current web player's view, through which the model's transport
// commands reach the page as script calls. It never keeps the view alive.
#include "model/webplayerscripts.h"

#include <QPointer>
#include <QWebEngineView>

class YouTubePlayerRegistry final : public WebPlayerScripts
{
public:
    static YouTubePlayerRegistry &shared();

    QWebEngineView *webView() const { return m_webView; }
    void setWebView(QWebEngineView *view) { m_webView = view; }
    // A view being taken down forgets the registration only if it is still its own.
    void clearIfHolding(const QWebEngineView *view);

    // Runs the script in the page of the view registered when the main loop next turns, so a
    // command given during an update runs after it. Without a view then, the call is dropped.
    // Results and script errors are ignored.
    void evaluate(const QString &script) override;
    void setMuted(bool muted);

private:
    YouTubePlayerRegistry() = default;

    QPointer<QWebEngineView> m_webView;
};
