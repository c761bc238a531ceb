#include "guidechannels.h"

namespace {
// Keeps the first channel found under a key.
void remember(QHash<QString, int> &index, const QString &key, int channel)
{
    if (!key.isEmpty() && !index.contains(key))
        index.insert(key, channel);
}
} // namespace

GuideChannels::GuideChannels(const std::vector<std::vector<GuideChannel>> &guides)
{
    for (const std::vector<GuideChannel> &guide : guides) {
        for (const GuideChannel &channel : guide) {
            if (m_byId.contains(channel.id))
                continue;
            const int index = int(m_channels.size());
            m_channels.push_back(channel);
            remember(m_byId, channel.id, index);
            remember(m_byFoldedId, channel.id.toCaseFolded(), index);
            for (const QString &displayName : channel.displayNames) {
                remember(m_byDisplayName, displayName, index);
                remember(m_byFoldedDisplayName, displayName.toCaseFolded(), index);
            }
        }
    }
}

std::optional<int> GuideChannels::match(const QString &tvgId, const QString &tvgName,
                                        const QString &name) const
{
    const auto find = [](const QHash<QString, int> &index, const QString &key) {
        const auto found = key.isEmpty() ? index.cend() : index.constFind(key);
        return found == index.cend() ? std::nullopt : std::optional<int>(*found);
    };
    if (const auto channel = find(m_byId, tvgId))
        return channel;
    if (const auto channel = find(m_byFoldedId, tvgId.toCaseFolded()))
        return channel;
    if (const auto channel = find(m_byDisplayName, tvgName))
        return channel;
    if (tvgName.contains(u'_')) {
        if (const auto channel = find(m_byDisplayName, QString(tvgName).replace(u'_', u' ')))
            return channel;
    }
    return find(m_byFoldedDisplayName, name.toCaseFolded());
}
