// Programme guides: loaded with each playlist, published to the views, and one timer for the
// next moment a programme begins or ends.
#include "playermodel.h"

#include "guide/guideaddress.h"
#include "sources/channelindex.h"

#include <QDateTime>

namespace {

qint64 nowSeconds()
{
    return QDateTime::currentSecsSinceEpoch();
}

// Guides loaded more than this long ago are read again, so that the kept two days ahead never
// run out in a player left open.
constexpr qint64 rereadAfterSeconds = 24 * 3600;

} // namespace

ProgrammeGuide::NowNext PlayerModel::playingProgrammes(qint64 moment) const
{
    if (!m_playingChannel || m_guide->isEmpty())
        return {};
    // The channel list hands out the playlist's entries.
    return m_guide->at(playlistPosition(*m_playingChannel), moment);
}

std::optional<QString> PlayerModel::chooseGuideFile() const
{
    if (!m_fileChooser)
        return std::nullopt;
    return m_fileChooser(OpenPanels::openGuide());
}

void PlayerModel::openGuide(const QString &text)
{
    const std::optional<QUrl> url = GuideAddress::fromText(text);
    if (!url) {
        showToast(QStringLiteral("Enter a guide file or an http or https address."));
        return;
    }
    if (!m_openedGuides.contains(*url))
        m_openedGuides.append(*url);
    if (playlist().isEmpty()) {
        showToast(QStringLiteral("The programme guide will be used with the next playlist."));
        return;
    }
    loadGuides();
}

void PlayerModel::loadGuides(bool keepShown)
{
    // The guides of the previous playlist are of no use to this one; the same playlist's are
    // shown until the new reading replaces them.
    m_guideChangeTask.stop();
    if (!keepShown && !m_guide->isEmpty()) {
        m_guide = std::make_shared<const ProgrammeGuide>();
        Q_EMIT programmeGuideChanged();
    }
    QList<QUrl> guides = m_playlistHeader.guides;
    QList<QUrl> networkOnly;
    if (!m_playlistHeader.fromLocalFile) {
        for (const QUrl &url : std::as_const(guides)) {
            if (!m_openedGuides.contains(url)) // what the user opened is the user's choice
                networkOnly.append(url);
        }
    }
    for (const QUrl &url : std::as_const(m_openedGuides)) {
        if (!guides.contains(url))
            guides.append(url);
    }
    if (playlist().isEmpty() || guides.isEmpty()) {
        m_guideLoader->cancel();
        m_loadingGuides = false;
        return;
    }
    m_loadingGuides = true;
    m_guideMoment = nowSeconds();
    m_guideLoader->load(
        {guides, playlist(), m_playlistHeader.shiftSeconds, m_guideMoment, networkOnly}, this,
        [this](const GuideLoader::Result &result) { publishGuide(result); });
}

void PlayerModel::publishGuide(const GuideLoader::Result &result)
{
    m_loadingGuides = !result.complete;
    m_guide = result.guide;
    Q_EMIT programmeGuideChanged();
    Q_EMIT programmesChanged();
    const QStringList notices = result.notices.mid(result.firstNewNotice);
    if (!notices.isEmpty())
        showToast(notices.first(), notices.mid(1).join(u'\n'));
    scheduleProgrammeChange();
}

void PlayerModel::scheduleProgrammeChange()
{
    const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
    const std::optional<qint64> next = m_guide->nextChange(nowMs / 1000);
    // Past the reread moment the guide is read again instead.
    const qint64 reread = m_guideMoment + rereadAfterSeconds;
    m_nextProgrammeChange = next ? std::min(*next, reread) : reread;
    const qint64 waitMs = m_nextProgrammeChange * 1000 - nowMs;
    m_guideChangeTask.start(int(std::clamp<qint64>(waitMs, 1, 24 * 3600 * 1000)));
}

void PlayerModel::programmesReached()
{
    const qint64 now = nowSeconds();
    if (now >= m_guideMoment + rereadAfterSeconds) {
        loadGuides(true);
        return;
    }
    // A timer that fires a little early changes nothing yet.
    if (now >= m_nextProgrammeChange)
        Q_EMIT programmesChanged();
    scheduleProgrammeChange();
}
