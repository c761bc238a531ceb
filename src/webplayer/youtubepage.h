#pragma once
// The generated page that hosts the video service's embeddable player, and the deployment values
// it is built with. Pure functions: no view, no I/O.
#include "sources/youtubecontent.h"

#include <QString>
#include <QUrl>
#include <optional>

namespace YouTubePage {

// The product's own web origin. The service only serves embedding pages that come from an https
// origin and send it as their referrer, so the page is loaded as if it came from here.
inline constexpr QStringView defaultWebOrigin = u"https://lumomediaplayer.app";
// Deployments may name another https origin in this environment variable.
inline constexpr const char *webOriginVariable = "LUMO_WEB_ORIGIN";
// Where the service publishes its IFrame player API.
inline constexpr QStringView apiScriptAddress = u"https://www.youtube.com/iframe_api";

// The origin that `text` names, as scheme://host[:port], when it is an https origin with
// nothing after the host but an optional "/"; nothing otherwise.
std::optional<QString> httpsOrigin(const QString &text);
// The override from the environment when it is a valid https origin, else the default.
QString webOrigin();
// The page's base address: the origin with a trailing "/".
QUrl baseUrl(const QString &origin);

// A script literal for an identifier: null when absent, else a double-quoted JSON string whose
// escaping also keeps it from ending the script element or the line. Text that is not valid
// UTF-16 (a lone surrogate) gives null.
QString javascriptString(const std::optional<QString> &value);

// The whole document for `content`, with `origin` as the player's origin.
QString html(const YouTubeContent &content, const QString &origin);

} // namespace YouTubePage
