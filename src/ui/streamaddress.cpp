#include "streamaddress.h"

#include "sources/sourceaddress.h"

#include <QUrl>

namespace StreamAddress {

QString cleaned(const QString &text)
{
    QString result = text;
    result.remove(QLatin1Char('\r'));
    result.remove(QLatin1Char('\n'));
    const auto isBlank = [](QChar c) {
        return c == QLatin1Char(' ') || c == QLatin1Char('\t');
    };
    qsizetype begin = 0;
    qsizetype end = result.size();
    while (begin < end && isBlank(result.at(begin)))
        ++begin;
    while (end > begin && isBlank(result.at(end - 1)))
        --end;
    return result.mid(begin, end - begin);
}

std::optional<QString> automaticOpenAddress(const QString &text)
{
    const QString normalized = SourceAddress::normalizedRemoteAddress(text);
    const QUrl url(normalized, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty())
        return std::nullopt;
    const QString scheme = url.scheme().toLower();
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        return std::nullopt;
    return normalized;
}

} // namespace StreamAddress
