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

QSet<QString> GuideWants::wanted(const std::vector<GuideChannel> &channels) const
{
    QSet<QString> ids;
    for (const GuideChannel &channel : channels) {
        bool wanted = m_foldedIds.contains(channel.id.toCaseFolded());
        for (qsizetype i = 0; !wanted && i < channel.displayNames.size(); ++i) {
            const QString &displayName = channel.displayNames[i];
            wanted = m_tvgNames.contains(displayName)
                || m_foldedNames.contains(displayName.toCaseFolded());
        }
        if (wanted)
            ids.insert(channel.id);
    }
    return ids;
}
