#pragma once
// The request headers some streams only play with, as a playlist names them for a channel
// (#EXTVLCOPT:http-user-agent=..., http-referrer="..."). Null strings when not named.
#include <QString>

struct StreamHeaders
{
    QString userAgent;
    QString referrer;

    bool isEmpty() const { return userAgent.isEmpty() && referrer.isEmpty(); }
    friend bool operator==(const StreamHeaders &, const StreamHeaders &) = default;
};
