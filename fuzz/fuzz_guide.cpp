// Any bytes as a programme guide (packed or not) and as a playlist's first line: unpacking,
// reading and merging must return, and what they return must hold.

#include "guide/guidedecoder.h"
#include "guide/programmeguide.h"
#include "guide/xmltvreader.h"
#include "sources/playlistheader.h"
#include "sources/playlistparser.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    static const QUrl base(QStringLiteral("http://lists.example/tv/index.m3u"));
    for (const QUrl &guide : PlaylistHeader::read(bytes, base).guides) {
        if (guide.isRelative())
            std::abort();
    }

    // Unpacked in uneven pieces, as a download brings them, then read.
    GuideDecoder decoder;
    QByteArray unpacked;
    const auto keep = [&unpacked](QByteArrayView block) {
        unpacked.append(block);
        return unpacked.size() < (qsizetype(16) << 20); // a bomb is read no further
    };
    qsizetype at = 0;
    for (qsizetype piece = 1; at < bytes.size(); piece = piece * 3 + 1) {
        const QByteArrayView chunk = bytes.sliced(at, std::min(piece, bytes.size() - at));
        at += chunk.size();
        decoder.feed(chunk, keep);
    }
    decoder.finish(keep);
    XmltvReader reader;
    reader.read(QByteArrayView(unpacked));
    for (const auto &programmes : reader.programmes()) {
        for (const ReadProgramme &programme : programmes) {
            if (programme.title >= quint32(reader.titles().size()))
                std::abort();
        }
    }

    static const QList<PlaylistEntry> entries = PlaylistParser::parse(
        QByteArrayView("#EXTM3U\n#EXTINF:-1 tvg-id=\"a\",A\nhttp://h/1\n"
                       "#EXTINF:-1 tvg-name=\"B_b\" tvg-shift=\"-2\",b\nhttp://h/2\n"),
        base);
    GuideRead read = reader.take();
    if (read.channels.empty() && !read.programmes.isEmpty()) {
        // Programmes of channels the guide never named: let the entries name them.
        read.channels.push_back({QStringLiteral("a"), {QStringLiteral("B b")}});
    }
    const ProgrammeGuide guide({read}, entries, 3600, 1795636800);
    for (qsizetype entry = 0; entry < entries.size(); ++entry) {
        const ProgrammeGuide::NowNext found = guide.at(entry, 1795636800);
        if (found.now && found.now->stop <= found.now->start)
            std::abort();
        if (found.now && found.next && found.next->start < found.now->stop)
            std::abort();
    }
    if (const std::optional<qint64> next = guide.nextChange(1795636800);
        next && *next <= 1795636800)
        std::abort();
    return 0;
}
