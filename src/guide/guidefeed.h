#pragma once
// One guide on its way in, whatever brings its bytes: unpacked and read as they come, up to a
// limit on the unpacked size, and what a user should be told about it at the end.
#include "guidedecoder.h"
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

    // False once no more bytes are wanted: the limit is reached, or the bytes are no guide.
    bool feed(QByteArrayView bytes);
    // The end of the bytes, all of them or as far as they came.
    void finish();

    bool limitReached() const { return m_limitReached; }
    const XmltvReader &reader() const { return m_reader; }

    // What the user is told once it is finished: nothing for a guide read whole and clean.
    QStringList notices() const;
    // What was read, moved out.
    GuideRead take();

private:
    QString m_name;
    qint64 m_maxUnpackedBytes;
    GuideDecoder m_decoder;
    XmltvReader m_reader;
    qint64 m_read = 0; // unpacked bytes handed to the reader
    bool m_limitReached = false;
    bool m_finished = false;
};
