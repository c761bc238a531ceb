#pragma once
// One guide on its way in, whatever brings its bytes: unpacked as they come and read on a thread
// of its own, up to a limit on the unpacked size, and what a user should be told about it at
// the end.
#include "guidedecoder.h"
#include "guidereaderthread.h"
#include "xmltvreader.h"

#include <QString>
#include <QStringList>

class GuideFeed
{
public:
    // Twice the largest real guide we know of (about 1 GB unpacked).
    static constexpr qint64 defaultMaxUnpackedBytes = qint64(2) << 30;

    // name is how notices call the guide (its file name).
    GuideFeed(QString name, XmltvReader::Options options,
              qint64 maxUnpackedBytes = defaultMaxUnpackedBytes);
    // Stops reading what was not read yet.
    ~GuideFeed();
    GuideFeed(const GuideFeed &) = delete;
    GuideFeed &operator=(const GuideFeed &) = delete;

    // False once no more bytes are wanted: the limit is reached, or the bytes are no guide.
    bool feed(QByteArrayView bytes);
    // The end of the bytes, all of them or as far as they came.
    void finish();

    bool limitReached() const { return m_limitReached; }
    // Once finished: what was read. (Before, the reader belongs to the reading thread.)
    const XmltvReader &reader() const { return m_reader; }

    // What the user is told once it is finished: nothing for a guide read whole and clean.
    QStringList notices() const;
    // What was read, moved out.
    GuideRead take();

private:
    // Hands an unpacked block to the reading thread, as much of it as the limit lets in.
    bool pass(QByteArrayView block);

    QString m_name;
    qint64 m_maxUnpackedBytes;
    GuideDecoder m_decoder;
    XmltvReader m_reader;
    std::unique_ptr<GuideReaderThread> m_readerThread; // after m_reader: gone before it
    qint64 m_read = 0; // unpacked bytes handed to the reader
    bool m_limitReached = false;
    bool m_finished = false;
};
