#include "hostileguides.h"

#include <QDateTime>
#include <QFile>
#include <QTimeZone>
#include <zlib.h>

namespace HostileGuides {
namespace {

const QByteArray start = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

QByteArray programme(qint64 from, const QByteArray &title)
{
    const auto time = [](qint64 seconds) {
        return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc())
                   .toString(QStringLiteral("yyyyMMddHHmmss"))
                   .toLatin1()
            + " +0000";
    };
    return "<programme channel=\"a\" start=\"" + time(from) + "\" stop=\"" + time(from + 3600)
        + "\"><title>" + title + "</title></programme>\n";
}

const QByteArray before = "<tv>\n<channel id=\"a\"><display-name>A</display-name></channel>\n"
    + programme(firstStart, "Before");
const QByteArray after = programme(firstStart + 3600, "After") + "</tv>\n";

// Deflates into a gzip stream, a piece at a time.
class GzipWriter
{
public:
    explicit GzipWriter(QFile &file)
        : m_file(file)
    {
        deflateInit2(&m_stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    }
    ~GzipWriter() { deflateEnd(&m_stream); }
    GzipWriter(const GzipWriter &) = delete;
    GzipWriter &operator=(const GzipWriter &) = delete;

    bool write(QByteArrayView bytes, int flush = Z_NO_FLUSH)
    {
        m_stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.data()));
        m_stream.avail_in = uInt(bytes.size());
        char out[64 * 1024];
        do {
            m_stream.next_out = reinterpret_cast<Bytef *>(out);
            m_stream.avail_out = sizeof out;
            if (deflate(&m_stream, flush) == Z_STREAM_ERROR)
                return false;
            const qint64 produced = qint64(sizeof out - m_stream.avail_out);
            if (produced > 0 && m_file.write(out, produced) != produced)
                return false;
        } while (m_stream.avail_out == 0);
        return true;
    }
    bool finish() { return write({}, Z_FINISH); }

private:
    QFile &m_file;
    z_stream m_stream {};
};

} // namespace

QByteArray nestedEntities(int levels)
{
    QByteArray bytes = start + "<!DOCTYPE tv [\n<!ENTITY l0 \"lol\">\n";
    for (int level = 1; level <= levels; ++level) {
        const QByteArray below = "&l" + QByteArray::number(level - 1) + ';';
        bytes += "<!ENTITY l" + QByteArray::number(level) + " \"" + below.repeated(10) + "\">\n";
    }
    bytes += "]>\n" + before;
    bytes += programme(firstStart + 1800, "Bomb &l" + QByteArray::number(levels) + "; here");
    return bytes + after;
}

QByteArray repeatedEntity(qsizetype entityBytes, int references)
{
    QByteArray bytes = start + "<!DOCTYPE tv [\n<!ENTITY big \"" + QByteArray(entityBytes, 'x')
        + "\">\n]>\n" + before;
    bytes += programme(firstStart + 1800, "Bomb " + QByteArray("&big;").repeated(references));
    return bytes + after;
}

void manyChannels(qint64 count, bool identical, const Sink &sink)
{
    if (!sink(start + before))
        return;
    QByteArray piece;
    for (qint64 i = 0; i < count; ++i) {
        piece += identical ? QByteArray("<channel id=\"same\"><display-name>Same</display-name>"
                                        "</channel>\n")
                           : "<channel id=\"c" + QByteArray::number(i) + "\"><display-name>C"
                + QByteArray::number(i) + "</display-name></channel>\n";
        if (piece.size() >= 1 << 20) {
            if (!sink(piece))
                return;
            piece.clear();
        }
    }
    if (sink(piece))
        sink(after);
}

void longTitle(qint64 bytes, const Sink &sink)
{
    if (!sink(start + before
              + "<programme channel=\"a\" start=\"20261125183000 +0000\" "
                "stop=\"20261125190000 +0000\"><title>"))
        return;
    const QByteArray piece(1 << 20, 'y');
    for (qint64 left = bytes; left > 0; left -= piece.size()) {
        if (!sink(QByteArrayView(piece).first(qsizetype(std::min<qint64>(left, piece.size())))))
            return;
    }
    sink("</title></programme>\n" + after);
}

QByteArray gzip(QByteArrayView bytes)
{
    QByteArray packed;
    packed.resize(qsizetype(compressBound(uLong(bytes.size()))) + 64);
    z_stream stream {};
    deflateInit2(&stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.data()));
    stream.avail_in = uInt(bytes.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = uInt(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(qsizetype(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

bool writeGzip(const QString &path, const std::function<void(const Sink &)> &write)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    GzipWriter writer(file);
    bool ok = true;
    write([&](QByteArrayView bytes) { return ok = ok && writer.write(bytes); });
    return ok && writer.finish();
}

} // namespace HostileGuides
