#pragma once
// The rows of the channel list: the playlist after the search and the two menus, numbered in
// that order. Changing the filter swaps the row numbers only; no row object is ever made.
#include "channelindex.h"

#include <QAbstractListModel>
#include <vector>

class ChannelListModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        NumberRole = Qt::UserRole + 1, // 1-based position in the filtered list
        MetadataRole, // country and group line
        LogoRole, // QUrl of the logo, invalid when none
    };

    explicit ChannelListModel(QObject *parent = nullptr);

    void setPlaylist(const QList<PlaylistEntry> &playlist);
    void setFilter(const ChannelFilter &filter);
    const ChannelFilter &filter() const { return m_filter; }

    const QList<PlaylistEntry> &playlist() const { return m_playlist; }
    const ChannelIndex &channelIndex() const { return m_index; }
    const PlaylistEntry &entry(int row) const { return m_playlist.at(m_rows[size_t(row)]); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    void refilter();

    QList<PlaylistEntry> m_playlist;
    ChannelIndex m_index;
    ChannelFilter m_filter;
    ChannelFilter m_lastFilter; // what m_rows were found for
    std::vector<int> m_rows;
};
