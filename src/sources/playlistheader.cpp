#include "playlistheader.h"

#include "extinfattributes.h"

#include "playlistlines.h"
#include "playlistparser.h"
#include "tvgshift.h"
#include "urlparts.h"

namespace {

// Header lines are short; a longer one is read this far.
constexpr qsizetype maxHeaderBytes = 64 * 1024;

QString firstLine(QByteArrayView bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes = bytes.sliced(3);
    bytes = bytes.first(std::min(bytes.size(), maxHeaderBytes));
    qsizetype start = 0;
    while (start < bytes.size()) {
        qsizetype end = start;
        while (end < bytes.size() && !PlaylistLines::isAsciiLineBreak(uchar(bytes[end])))
            ++end;
        const QByteArrayView line = bytes.sliced(start, end - start).trimmed();
        if (!line.isEmpty()) {
            const QString text = QString::fromUtf8(line);
            return text.contains(QChar::ReplacementCharacter) ? QString::fromLatin1(line) : text;
        }
        start = end + 1;
    }
    return {};
}

QStringView firstLine(QStringView text)
{
    if (text.startsWith(u'\uFEFF'))
        text = text.sliced(1);
    text = text.first(std::min(text.size(), maxHeaderBytes));
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = start;
        while (end < text.size() && !PlaylistLines::isLineBreak(text[end].unicode()))
            ++end;
        const QStringView line = text.sliced(start, end - start).trimmed();
        if (!line.isEmpty())
            return line;
        start = end + 1;
    }
    return {};
}

PlaylistHeader readLine(QStringView line, const QUrl &baseURL)
{
    PlaylistHeader header;
    header.fromLocalFile = baseURL.isLocalFile();
    if (!line.startsWith(u"#EXTM3U"))
        return header;
    for (const QStringView name : {QStringView(u"x-tvg-url"), QStringView(u"url-tvg")}) {
        const std::optional<QString> list = PlaylistParser::attribute(name, line);
        if (!list)
            continue;
        for (const QStringView piece : QStringView(*list).split(u',')) {
            const QStringView address = piece.trimmed();
            if (address.isEmpty())
                continue;
            const std::optional<QUrl> url = UrlParts::parse(address, baseURL);
            if (url && !url->isRelative() && !header.guides.contains(*url))
                header.guides.append(*url);
        }
    }
    if (const std::optional<QString> shift = PlaylistParser::attribute(u"tvg-shift", line))
        header.shiftSeconds = TvgShift::parseSeconds(*shift);
    header.catchup = CatchupAttributes::read(ExtinfAttributes(line));
    return header;
}

} // namespace

PlaylistHeader PlaylistHeader::read(QByteArrayView bytes, const QUrl &baseURL)
{
    return readLine(firstLine(bytes), baseURL);
}

PlaylistHeader PlaylistHeader::read(QStringView text, const QUrl &baseURL)
{
    return readLine(firstLine(text), baseURL);
}
