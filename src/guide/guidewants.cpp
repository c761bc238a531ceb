#include "guidewants.h"

GuideWants::GuideWants(const QList<PlaylistEntry> &entries)
{
    for (const PlaylistEntry &entry : entries) {
        if (!entry.tvgId().isEmpty())
            m_foldedIds.insert(entry.tvgId().toString().toCaseFolded());
        const QStringView tvgName = entry.tvgName();
        if (!tvgName.isEmpty()) {
            m_tvgNames.insert(tvgName.toString());
            if (tvgName.contains(u'_'))
                m_tvgNames.insert(tvgName.toString().replace(u'_', u' '));
        }
        m_foldedNames.insert(entry.nameView().toString().toCaseFolded());
    }
}

bool GuideWants::wants(const GuideChannel &channel) const
{
    if (m_foldedIds.contains(channel.id.toCaseFolded()))
        return true;
    for (const QString &displayName : channel.displayNames) {
        if (m_tvgNames.contains(displayName) || m_foldedNames.contains(displayName.toCaseFolded()))
            return true;
    }
    return false;
}

QSet<QString> GuideWants::wanted(const std::vector<GuideChannel> &channels) const
{
    QSet<QString> ids;
    for (const GuideChannel &channel : channels) {
        if (wants(channel))
            ids.insert(channel.id);
    }
    return ids;
}
