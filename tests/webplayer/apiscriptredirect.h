#pragma once
// Sends the page's request for the video service's IFrame API script to an address of the
// test's choosing on loopback, as the service itself is out of reach here.
#include "webplayer/youtubepage.h"

#include <QWebEngineUrlRequestInterceptor>

class ApiScriptRedirect final : public QWebEngineUrlRequestInterceptor
{
public:
    QUrl target;

    void interceptRequest(QWebEngineUrlRequestInfo &info) override
    {
        if (info.requestUrl() == QUrl(YouTubePage::apiScriptAddress.toString()))
            info.redirect(target);
    }
};
