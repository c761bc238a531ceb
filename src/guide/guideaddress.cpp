#include "guideaddress.h"

#include "sources/urlparts.h"

#include <QFileInfo>

namespace GuideAddress {

std::optional<QUrl> fromText(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.startsWith(u"http://", Qt::CaseInsensitive)
        || trimmed.startsWith(u"https://", Qt::CaseInsensitive)) {
        std::optional<QUrl> url = UrlParts::parse(trimmed);
        if (url && url->host().isEmpty())
            url.reset();
        return url;
    }
    if (trimmed.startsWith(u"file:", Qt::CaseInsensitive)) {
        const QUrl url(trimmed);
        return url.isValid() && url.isLocalFile() ? std::optional(url) : std::nullopt;
    }
    if (trimmed.isEmpty() || trimmed.contains(u"://"))
        return std::nullopt;
    return QUrl::fromLocalFile(QFileInfo(trimmed).absoluteFilePath());
}

} // namespace GuideAddress
