// Any bytes as a playlist: decoding and parsing must return, and what they return must hold.

#include "sources/playlistparser.h"
#include "sources/playlisttext.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString text = decodePlaylistText(bytes);
    static const QUrl base(QStringLiteral("http://lists.example/tv/index.m3u"));
    const QList<PlaylistEntry> entries = PlaylistParser::parse(text, base);
    for (const PlaylistEntry &entry : entries) {
        if (entry.name().isEmpty() || entry.encodedUrl().isEmpty())
            std::abort();
        if (const std::optional<QString> code = entry.countryCode(); code && code->isEmpty())
            std::abort();
        if (const std::optional<QString> group = entry.groupTitle(); group && group->isEmpty())
            std::abort();
    }
    const QStringView firstLine = QStringView(text).first(std::min<qsizetype>(text.size(), 4096));
    for (QStringView name : {u"tvg-id", u"country", u"group-title"}) {
        if (const std::optional<QString> value = PlaylistParser::attribute(name, firstLine)) {
            if (value->isEmpty() || value->trimmed() != *value)
                std::abort();
            PlaylistParser::inferredCountryCode(value);
            PlaylistParser::normalizedCountryCode(*value);
        }
    }
    return 0;
}
