#include "guidefeed.h"

GuideFeed::GuideFeed(QString name, XmltvReader::Options options, qint64 maxUnpackedBytes)
    : m_name(std::move(name))
    , m_maxUnpackedBytes(maxUnpackedBytes)
    , m_reader(std::move(options))
{ }

bool GuideFeed::feed(QByteArrayView bytes)
{
    if (m_limitReached || m_reader.hasError() || m_decoder.failed())
        return false;
    m_decoder.feed(bytes, [this](QByteArrayView block) {
        const qint64 room = m_maxUnpackedBytes - m_read;
        if (block.size() > room) {
            // What fits is read; the rest of the guide is not.
            m_reader.feed(block.first(qsizetype(room)));
            m_read += room;
            m_limitReached = true;
            return false;
        }
        m_reader.feed(block);
        m_read += block.size();
        return !m_reader.hasError();
    });
    return !m_limitReached && !m_reader.hasError() && !m_decoder.failed();
}

void GuideFeed::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    if (!m_limitReached && !m_decoder.failed()) {
        m_decoder.finish([this](QByteArrayView block) {
            const qint64 room = m_maxUnpackedBytes - m_read;
            m_reader.feed(block.first(qsizetype(std::min<qint64>(room, block.size()))));
            m_read += std::min<qint64>(room, block.size());
            m_limitReached = block.size() > room;
            return !m_limitReached;
        });
    }
    m_reader.finish();
}

QStringList GuideFeed::notices() const
{
    QStringList notices;
    const bool readSomething = !m_reader.channels().empty() || m_reader.programmeCount() > 0;
    if (m_limitReached) {
        const QString limit = m_maxUnpackedBytes >= (qint64(1) << 30)
            ? QStringLiteral("%1 GB").arg(m_maxUnpackedBytes >> 30)
            : QStringLiteral("%1 MB").arg(m_maxUnpackedBytes >> 20);
        notices.append(QStringLiteral("The programme guide “%1” is larger than %2 unpacked: "
                                      "only its first %2 are used.")
                           .arg(m_name, limit));
    } else if (!readSomething && (m_reader.hasError() || m_decoder.failed())) {
        notices.append(
            QStringLiteral("The file “%1” isn’t a programme guide (XMLTV).").arg(m_name));
    } else if (m_decoder.failed() || m_decoder.truncated() || m_reader.hasError()) {
        notices.append(
            QStringLiteral("The programme guide “%1” is damaged or cut short: what could be "
                           "read of it is used.")
                .arg(m_name));
    }
    if (const int skipped = m_reader.skippedProgrammes(); skipped == 1) {
        notices.append(QStringLiteral("1 programme of “%1” has a time that cannot be read and is "
                                      "left out.")
                           .arg(m_name));
    } else if (skipped > 1) {
        notices.append(QStringLiteral("%1 programmes of “%2” have times that cannot be read and "
                                      "are left out.")
                           .arg(skipped)
                           .arg(m_name));
    }
    return notices;
}

GuideRead GuideFeed::take()
{
    return m_reader.take();
}
