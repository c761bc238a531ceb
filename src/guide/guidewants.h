#pragma once
// Which channels of a guide a playlist could be matched to, known before the guides are merged:
// a channel is wanted when any of the matching rules would pick it for any entry. Reading only
// those channels' programmes keeps a 1 GB guide's memory to the playlist's share of it.
#include "sources/playlistentry.h"

#include "guidechannels.h"

#include <QList>
#include <QSet>
#include <QString>
#include <vector>

class GuideWants
{
public:
    GuideWants() = default;
    explicit GuideWants(const QList<PlaylistEntry> &entries);

    // Whether some entry may belong to the channel.
    bool wants(const GuideChannel &channel) const;
    // The ids of the channels that some entry may belong to.
    QSet<QString> wanted(const std::vector<GuideChannel> &channels) const;

private:
    QSet<QString> m_foldedIds;
    QSet<QString> m_tvgNames; // as written and with "_" read as " "
    QSet<QString> m_foldedNames;
};
