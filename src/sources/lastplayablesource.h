#pragma once

// What was opened last, kept so that it can be opened again.

#include "youtubecontent.h"

#include <QString>
#include <QUrl>

#include <variant>

struct LastPlayableMedia
{
    QUrl url; // absolute: a local file or a remote address
    QString title;
    bool isLiveStream = false;

    friend bool operator==(const LastPlayableMedia &, const LastPlayableMedia &) = default;
};

struct LastPlayableYouTube
{
    YouTubeContent content;
    QString title;

    friend bool operator==(const LastPlayableYouTube &, const LastPlayableYouTube &) = default;
};

using LastPlayableSource = std::variant<LastPlayableMedia, LastPlayableYouTube>;
