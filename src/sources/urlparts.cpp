#include "urlparts.h"

#include <QStringDecoder>

namespace UrlParts {

namespace {

int hexValue(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    return -1;
}

bool isInvalidExtensionCharacter(QChar c)
{
    switch (c.unicode()) {
    case u' ':
    case u'/':
    case 0x061C:
    case 0x200E:
    case 0x200F:
    case 0x202A:
    case 0x202B:
    case 0x202C:
    case 0x202D:
    case 0x202E:
    case 0x2066:
    case 0x2067:
    case 0x2068:
    case 0x2069:
        return true;
    default:
        return false;
    }
}

// The last component of a path with trailing slashes ignored; empty when there is none.
QStringView lastSegment(QStringView path)
{
    qsizetype end = path.size();
    while (end > 0 && path[end - 1] == u'/')
        --end;
    const qsizetype slash = path.first(end).lastIndexOf(u'/');
    return path.sliced(slash + 1, end - slash - 1);
}

// The extension of one path component, by the rule documented for pathExtension().
QStringView extensionOf(QStringView component)
{
    if (component.endsWith(u'.') || component.startsWith(u".."))
        return {};
    const qsizetype dot = component.lastIndexOf(u'.');
    if (dot <= 0)
        return {};
    const QStringView extension = component.sliced(dot + 1);
    for (QChar c : extension) {
        if (isInvalidExtensionCharacter(c))
            return {};
    }
    return extension;
}

} // namespace

QByteArray encoded(const QUrl &url)
{
    // QUrl converts in place and keeps a buffer twice the size; playlists hold many addresses.
    const QByteArray bytes = url.toEncoded();
    return QByteArray(bytes.constData(), bytes.size());
}

std::optional<QUrl> parse(QStringView text)
{
    QUrl url(text.toString(), QUrl::TolerantMode);
    if (!url.isValid())
        return std::nullopt;
    return url;
}

std::optional<QUrl> parse(QStringView text, const QUrl &base)
{
    std::optional<QUrl> url = parse(text);
    if (url && url->isRelative() && !base.isEmpty()) {
        QUrl resolved = base.resolved(*url);
        if (!resolved.isValid())
            return std::nullopt;
        return resolved;
    }
    return url;
}

QString lastPathComponent(const QUrl &url)
{
    const QString path = url.path(QUrl::FullyEncoded);
    return lastSegment(path).toString();
}

QString pathExtension(const QUrl &url)
{
    const QString path = url.path(QUrl::FullyDecoded);
    return extensionOf(lastSegment(path)).toString();
}

QString deletingPathExtension(const QString &component)
{
    const QStringView extension = extensionOf(component);
    if (extension.isEmpty())
        return component;
    return component.first(component.size() - extension.size() - 1);
}

QStringList pathComponents(const QUrl &url)
{
    return url.path(QUrl::FullyDecoded).split(u'/', Qt::SkipEmptyParts);
}

QList<QueryItem> queryItems(const QUrl &url)
{
    QList<QueryItem> items;
    if (!url.hasQuery())
        return items;
    const QString query = url.query(QUrl::FullyEncoded);
    if (query.isEmpty())
        return items;
    const auto decoded = [](QStringView part) {
        return removingPercentEncoding(part).value_or(part.toString());
    };
    for (QStringView item : QStringView(query).split(u'&')) {
        const qsizetype equals = item.indexOf(u'=');
        if (equals < 0)
            items.append({decoded(item), std::nullopt});
        else
            items.append({decoded(item.first(equals)), decoded(item.sliced(equals + 1))});
    }
    return items;
}

std::optional<QString> removingPercentEncoding(QStringView text)
{
    if (!text.contains(u'%'))
        return text.toString();
    QByteArray bytes;
    bytes.reserve(text.size());
    qsizetype runStart = 0; // start of the text since the last escape
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'%')
            continue;
        if (i + 2 >= text.size())
            return std::nullopt;
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes.append(text.sliced(runStart, i - runStart).toUtf8());
        bytes.append(char(high * 16 + low));
        i += 2;
        runStart = i + 1;
    }
    bytes.append(text.sliced(runStart).toUtf8());
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    QString result = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return result;
}

} // namespace UrlParts
