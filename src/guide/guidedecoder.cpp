#include "guidedecoder.h"

#include <algorithm>
#include <lzma.h>
#include <zlib.h>

namespace {
constexpr int outputChunk = 256 * 1024;
constexpr QByteArrayView gzipMagic("\x1f\x8b", 2);
constexpr QByteArrayView xzMagic("\xfd"
                                 "7zXZ\x00",
                                 6);
} // namespace

// One inflate stream for each gzip member: a guide may be several members one after another.
struct GuideDecoder::Zlib
{
    z_stream stream {};
    bool open = false;

    bool start()
    {
        stream = z_stream {};
        // 16 + MAX_WBITS: gzip only, with its header and trailer checked.
        open = inflateInit2(&stream, 16 + MAX_WBITS) == Z_OK;
        return open;
    }
    ~Zlib()
    {
        if (open)
            inflateEnd(&stream);
    }
};

struct GuideDecoder::Xz
{
    lzma_stream stream = LZMA_STREAM_INIT;
    bool open = false;

    bool start()
    {
        // Concatenated streams too, as xz writes them; memory limited to what xz -9 needs.
        open = lzma_stream_decoder(&stream, 256u << 20, LZMA_CONCATENATED) == LZMA_OK;
        return open;
    }
    ~Xz()
    {
        if (open)
            lzma_end(&stream);
    }
};

GuideDecoder::GuideDecoder() = default;
GuideDecoder::~GuideDecoder() = default;

QByteArray GuideDecoder::feed(QByteArrayView chunk)
{
    QByteArray output;
    feed(chunk, [&output](QByteArrayView block) {
        output.append(block);
        return true;
    });
    return output;
}

QByteArray GuideDecoder::finish()
{
    QByteArray output;
    finish([&output](QByteArrayView block) {
        output.append(block);
        return true;
    });
    return output;
}

bool GuideDecoder::feed(QByteArrayView chunk, const Sink &sink)
{
    if (m_failed)
        return true;
    if (m_format == Format::unknown) {
        m_head.append(chunk);
        if (m_head.size() < xzMagic.size()
            && (xzMagic.startsWith(m_head) || gzipMagic.startsWith(m_head.left(2))))
            return true;
        if (m_head.startsWith(gzipMagic)) {
            m_format = Format::gzip;
            m_zlib = std::make_unique<Zlib>();
            m_failed = !m_zlib->start();
        } else if (m_head.startsWith(xzMagic)) {
            m_format = Format::xz;
            m_xz = std::make_unique<Xz>();
            m_failed = !m_xz->start();
        } else {
            m_format = Format::plain;
        }
        const QByteArray head = std::exchange(m_head, {});
        return m_failed || unpack(head, sink);
    }
    return unpack(chunk, sink);
}

void GuideDecoder::finish(const Sink &sink)
{
    if (m_format == Format::unknown) {
        // Too short to be packed: whatever it is, it is read as it is.
        m_format = Format::plain;
        if (!unpack(std::exchange(m_head, {}), sink))
            return;
    }
    if (m_format == Format::xz && !m_failed) {
        // Concatenated xz streams end only when told the input has.
        lzma_stream &stream = m_xz->stream;
        stream.next_in = nullptr;
        stream.avail_in = 0;
        for (;;) {
            QByteArray block(outputChunk, Qt::Uninitialized);
            stream.next_out = reinterpret_cast<uint8_t *>(block.data());
            stream.avail_out = outputChunk;
            const lzma_ret status = lzma_code(&stream, LZMA_FINISH);
            block.resize(outputChunk - qsizetype(stream.avail_out));
            m_unpacked += block.size();
            if (status == LZMA_STREAM_END)
                m_ended = true;
            if (!block.isEmpty() && !sink(block))
                return;
            if (status != LZMA_OK)
                break;
        }
    }
    if (m_format != Format::plain && !m_ended && !m_failed)
        m_truncated = true;
}

bool GuideDecoder::unpack(QByteArrayView chunk, const Sink &sink)
{
    if (m_format == Format::plain) {
        m_unpacked += chunk.size();
        return chunk.isEmpty() || sink(chunk);
    }
    QByteArray output(outputChunk, Qt::Uninitialized);
    const auto *input = reinterpret_cast<const uint8_t *>(chunk.data());
    std::size_t left = std::size_t(chunk.size());
    // A full output block may leave more unpacked output behind, even with no input left.
    bool more = left > 0;
    while (more && !m_failed) {
        auto *space = reinterpret_cast<uint8_t *>(output.data());
        std::size_t produced = 0;
        std::size_t consumed = 0;
        if (m_format == Format::gzip) {
            if (m_ended) {
                // Another member follows the one that ended.
                m_zlib = std::make_unique<Zlib>();
                m_failed = !m_zlib->start();
                m_ended = false;
                if (m_failed)
                    break;
            }
            z_stream &stream = m_zlib->stream;
            stream.next_in = const_cast<Bytef *>(input);
            stream.avail_in = uInt(std::min<std::size_t>(left, 1u << 30));
            stream.next_out = space;
            stream.avail_out = outputChunk;
            const int status = inflate(&stream, Z_NO_FLUSH);
            consumed = std::size_t(stream.next_in - input);
            produced = outputChunk - stream.avail_out;
            if (status == Z_STREAM_END)
                m_ended = true;
            else if (status != Z_OK && status != Z_BUF_ERROR)
                m_failed = true;
        } else {
            lzma_stream &stream = m_xz->stream;
            stream.next_in = input;
            stream.avail_in = left;
            stream.next_out = space;
            stream.avail_out = outputChunk;
            const lzma_ret status = lzma_code(&stream, LZMA_RUN);
            consumed = left - stream.avail_in;
            produced = outputChunk - stream.avail_out;
            if (status == LZMA_STREAM_END)
                m_ended = true;
            else if (status != LZMA_OK && status != LZMA_BUF_ERROR)
                m_failed = true;
        }
        input += consumed;
        left -= consumed;
        m_unpacked += qint64(produced);
        if (produced > 0 && !sink(QByteArrayView(output.constData(), qsizetype(produced))))
            return false;
        more = left > 0 || produced == std::size_t(outputChunk);
        if (consumed == 0 && produced == 0)
            break; // nothing moves: the rest waits for more input
    }
    return true;
}
