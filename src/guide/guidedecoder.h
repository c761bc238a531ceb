#pragma once
// Unpacks a guide as its bytes come: gzip or xz, told by their first bytes whatever the name,
// or plain text passed through. Holds only what one chunk unpacks to.
#include <QByteArray>
#include <QByteArrayView>
#include <functional>
#include <memory>

class GuideDecoder
{
public:
    enum class Format {
        unknown, // fewer bytes seen than it takes to tell
        plain,
        gzip,
        xz,
    };

    GuideDecoder();
    ~GuideDecoder();
    GuideDecoder(const GuideDecoder &) = delete;
    GuideDecoder &operator=(const GuideDecoder &) = delete;

    // Takes each unpacked block (at most 256 KB) as it is made; false stops the unpacking.
    using Sink = std::function<bool(QByteArrayView block)>;

    // Unpacks the next chunk into sink, a block at a time, so that a small chunk that unpacks
    // to a lot is never held whole. False when sink stopped it. After an error nothing more
    // comes.
    bool feed(QByteArrayView chunk, const Sink &sink);
    // The end of the input: what is left over goes to sink.
    void finish(const Sink &sink);

    // The same, collected: the unpacked bytes of the next chunk (may be empty while a format is
    // being told or a packed block is incomplete), and what is left at the end.
    QByteArray feed(QByteArrayView chunk);
    QByteArray finish();

    Format format() const { return m_format; }
    // The packed stream is damaged (not merely cut short).
    bool failed() const { return m_failed; }
    // The packed stream ended before its end mark: what came is kept.
    bool truncated() const { return m_truncated; }
    qint64 unpackedBytes() const { return m_unpacked; }

private:
    struct Zlib;
    struct Xz;
    bool unpack(QByteArrayView chunk, const Sink &sink);

    Format m_format = Format::unknown;
    QByteArray m_head; // bytes held until the format is told
    std::unique_ptr<Zlib> m_zlib;
    std::unique_ptr<Xz> m_xz;
    bool m_failed = false;
    bool m_truncated = false;
    bool m_ended = false; // the packed stream's end mark was seen
    qint64 m_unpacked = 0;
};
