#pragma once
// The channels of one or more guides, merged, and which of them a playlist entry belongs to.
#include <QHash>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

struct GuideChannel
{
    QString id;
    QStringList displayNames;
    friend bool operator==(const GuideChannel &, const GuideChannel &) = default;
};

class GuideChannels
{
public:
    GuideChannels() = default;
    // The channels of every guide, in the playlist header's order of guides: a channel id in
    // several guides keeps the first guide's display names.
    explicit GuideChannels(const std::vector<std::vector<GuideChannel>> &guides);

    const std::vector<GuideChannel> &channels() const { return m_channels; }

    // The channel of a playlist entry, the first rule that finds one winning: tvg-id equal to
    // a channel's id; equal ignoring case; tvg-name equal to a display name, also with its
    // underscores read as spaces; the entry's name equal to a display name ignoring case.
    std::optional<int> match(const QString &tvgId, const QString &tvgName,
                             const QString &name) const;

private:
    std::vector<GuideChannel> m_channels;
    QHash<QString, int> m_byId;
    QHash<QString, int> m_byFoldedId;
    QHash<QString, int> m_byDisplayName;
    QHash<QString, int> m_byFoldedDisplayName;
};
