#include "playlistexpansion.h"

void PlaylistExpansion::start(const QUrl &url)
{
    clear();
    m_current = {url, 0};
    m_requests = 1;
}

void PlaylistExpansion::expand(const QList<QUrl> &entries)
{
    const int depth = m_current.depth + 1;
    if (depth > maxDepth)
        return;
    m_named += int(entries.size());
    QList<Entry> inserted;
    inserted.reserve(entries.size());
    for (const QUrl &url : entries)
        inserted.append({url, depth});
    m_left = inserted + m_left;
}

std::optional<QUrl> PlaylistExpansion::next()
{
    if (m_left.isEmpty() || m_requests >= maxRequests) {
        m_left.clear();
        return std::nullopt;
    }
    m_current = m_left.takeFirst();
    ++m_requests;
    return m_current.url;
}

QString PlaylistExpansion::failureReason() const
{
    if (m_named == 0)
        return {};
    if (m_named == 1)
        return QStringLiteral("Its one entry could not be played.");
    return QStringLiteral("None of its %1 entries could be played.").arg(m_named);
}
