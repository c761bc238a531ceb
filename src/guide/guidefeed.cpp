#include "guidefeed.h"

GuideFeed::GuideFeed(QString name, XmltvReader::Options options, qint64 maxUnpackedBytes)
    : m_name(std::move(name))
    , m_maxUnpackedBytes(maxUnpackedBytes)
    , m_reader(std::move(options))
    , m_readerThread(std::make_unique<GuideReaderThread>(m_reader))
{ }

GuideFeed::~GuideFeed() = default;

bool GuideFeed::pass(QByteArrayView block)
{
    const qint64 room = m_maxUnpackedBytes - m_read;
    // What fits is read; the rest of the guide is not.
    const qint64 taken = std::min<qint64>(room, block.size());
    m_read += taken;
    m_limitReached = block.size() > room;
    const bool wanted
        = taken <= 0 || m_readerThread->push(block.first(qsizetype(taken)).toByteArray());
    return wanted && !m_limitReached;
}

bool GuideFeed::feed(QByteArrayView bytes)
{
    if (m_finished || m_limitReached || m_readerThread->failed() || m_decoder.failed())
        return false;
    m_decoder.feed(bytes, [this](QByteArrayView block) { return pass(block); });
    return !m_limitReached && !m_readerThread->failed() && !m_decoder.failed();
}

void GuideFeed::finish()
{
    if (m_finished)
        return;
    m_finished = true;
    if (!m_limitReached && !m_decoder.failed() && !m_readerThread->failed())
        m_decoder.finish([this](QByteArrayView block) { return pass(block); });
    m_readerThread->finish();
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
    if (m_reader.programmesOverLimit() > 0) {
        notices.append(QStringLiteral("The programme guide “%1” has more programmes than can be "
                                      "kept: only the first are used.")
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
