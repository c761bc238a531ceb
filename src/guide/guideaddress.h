#pragma once
// Where a guide a user names is: an http or https address, a file: address, or else a path to a
// local file (relative to the working folder).
#include <QString>
#include <QUrl>
#include <optional>

namespace GuideAddress {

// Nothing for empty text and for addresses of any other kind (ftp://, rtsp://).
std::optional<QUrl> fromText(const QString &text);

} // namespace GuideAddress
