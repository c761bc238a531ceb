#include "playlistparser.h"

#include "urlparts.h"

#include <QHash>
#include <QTextBoundaryFinder>

namespace {

// The newline characters that end a line: LF, VT, FF, CR, NEL, LINE and PARAGRAPH SEPARATOR.
bool isNewline(char16_t c)
{
    return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

// Counts user-perceived characters; country codes are short, so this stays cheap.
qsizetype characterCount(const QString &text)
{
    bool simple = true;
    for (QChar c : text) {
        if (c.unicode() >= 0x300) {
            simple = false;
            break;
        }
    }
    if (simple)
        return text.size();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() >= 0)
        ++count;
    return count;
}

std::optional<QString> twoCharacterCode(QStringView piece)
{
    QString code = piece.toString().toUpper();
    if (characterCount(code) != 2)
        return std::nullopt;
    return code;
}

std::optional<QStringView> attributeView(QStringView needle, QStringView line)
{
    const qsizetype at = line.indexOf(needle, 0, Qt::CaseInsensitive);
    if (at < 0)
        return std::nullopt;
    const qsizetype valueStart = at + needle.size();
    const qsizetype closing = line.indexOf(u'"', valueStart);
    if (closing < 0)
        return std::nullopt;
    const QStringView value = line.sliced(valueStart, closing - valueStart).trimmed();
    if (value.isEmpty())
        return std::nullopt;
    return value;
}

// Shares one copy of texts that repeat across a playlist (groups, countries).
class TextPool
{
public:
    QString intern(QStringView text)
    {
        if (text.isEmpty())
            return {};
        QString key = text.toString();
        auto it = m_texts.constFind(key);
        if (it != m_texts.constEnd())
            return *it;
        m_texts.insert(key, key);
        return key;
    }

private:
    QHash<QString, QString> m_texts;
};

struct PendingInfo
{
    QString name;
    QByteArray logo;
    QString group;
    QString country;
};

class Parser
{
public:
    explicit Parser(const QUrl &baseURL)
        : m_baseURL(baseURL)
    { }

    void readExtinf(QStringView line)
    {
        // Everything after the first comma, further commas kept; the whole line with no comma.
        const qsizetype comma = line.indexOf(u',');
        const QStringView title = (comma < 0 ? line : line.sliced(comma + 1)).trimmed();

        m_pending = {};
        if (!title.isEmpty())
            m_pending.name = title.toString();
        else if (std::optional<QStringView> name = attributeView(u"tvg-name=\"", line))
            m_pending.name = name->toString();

        if (std::optional<QStringView> logo = attributeView(u"tvg-logo=\"", line)) {
            std::optional<QUrl> url = UrlParts::parse(*logo);
            if (url && !url->isRelative())
                m_pending.logo = url->toEncoded();
        }
        if (std::optional<QStringView> group = attributeView(u"group-title=\"", line))
            m_pending.group = m_pool.intern(*group);

        std::optional<QStringView> country = attributeView(u"tvg-country=\"", line);
        if (!country)
            country = attributeView(u"country=\"", line);
        std::optional<QString> code;
        if (country)
            code = PlaylistParser::normalizedCountryCode(*country);
        if (!code) {
            if (std::optional<QStringView> tvgID = attributeView(u"tvg-id=\"", line))
                code = PlaylistParser::inferredCountryCode(tvgID->toString());
        }
        if (code)
            m_pending.country = m_pool.intern(*code);
    }

    void readAddress(QStringView line)
    {
        const std::optional<QUrl> url = UrlParts::parse(line, m_baseURL);
        if (!url)
            return; // keep the pending information for the next address line

        QString name = std::move(m_pending.name);
        if (name.isEmpty()) {
            // "live/news%20one.ts" is listed as "news one": the file's name, not its type.
            const std::optional<QString> component
                = UrlParts::removingPercentEncoding(UrlParts::lastPathComponent(*url));
            if (component)
                name = UrlParts::deletingPathExtension(*component);
        }
        if (name.isEmpty())
            name = url->host(QUrl::FullyDecoded);
        if (name.isEmpty())
            name = QStringLiteral("Stream");

        m_entries.append(PlaylistEntry::fromEncoded(
            QUuid::createUuid(), std::move(name), url->toEncoded(), std::move(m_pending.logo),
            std::move(m_pending.group), std::move(m_pending.country)));
        m_pending = {};
    }

    QList<PlaylistEntry> take() { return std::move(m_entries); }

private:
    QUrl m_baseURL;
    PendingInfo m_pending;
    TextPool m_pool;
    QList<PlaylistEntry> m_entries;
};

} // namespace

QList<PlaylistEntry> PlaylistParser::parse(QStringView text, const QUrl &baseURL)
{
    Parser parser(baseURL);
    const char16_t *const data = text.utf16();
    const qsizetype size = text.size();
    qsizetype start = 0;
    while (start < size) {
        qsizetype end = start;
        while (end < size && !isNewline(data[end]))
            ++end;
        const QStringView line = text.sliced(start, end - start).trimmed();
        start = end + 1;
        if (line.isEmpty())
            continue;
        if (line.startsWith(u"#EXTINF:"))
            parser.readExtinf(line);
        else if (!line.startsWith(u'#'))
            parser.readAddress(line);
    }
    return parser.take();
}

std::optional<QString> PlaylistParser::attribute(QStringView name, QStringView line)
{
    QString needle = name.toString();
    needle.append(QStringView(u"=\""));
    const std::optional<QStringView> value = attributeView(needle, line);
    if (!value)
        return std::nullopt;
    return value->toString();
}

std::optional<QString> PlaylistParser::inferredCountryCode(const std::optional<QString> &tvgID)
{
    if (!tvgID)
        return std::nullopt;
    QStringView value = *tvgID;

    // The first non-empty piece around the first "@"; leading "@"s are skipped.
    QStringView beforeAt = value;
    qsizetype first = 0;
    while (first < value.size() && value[first] == u'@')
        ++first;
    const qsizetype at = value.indexOf(u'@', first);
    beforeAt = value.sliced(first, (at < 0 ? value.size() : at) - first);
    if (beforeAt.isEmpty())
        beforeAt = value;

    // The last non-empty piece between dots.
    qsizetype end = beforeAt.size();
    while (end > 0 && beforeAt[end - 1] == u'.')
        --end;
    const qsizetype dot = beforeAt.first(end).lastIndexOf(u'.');
    const QStringView last = beforeAt.sliced(dot + 1, end - dot - 1);
    if (last.isEmpty())
        return std::nullopt;
    return twoCharacterCode(last);
}

std::optional<QString> PlaylistParser::normalizedCountryCode(QStringView value)
{
    const auto isSeparator = [](QChar c) {
        return c == u',' || c == u';' || c == u' ';
    };
    qsizetype start = 0;
    while (start < value.size() && isSeparator(value[start]))
        ++start;
    qsizetype end = start;
    while (end < value.size() && !isSeparator(value[end]))
        ++end;
    if (end == start)
        return std::nullopt;
    return twoCharacterCode(value.sliced(start, end - start));
}
