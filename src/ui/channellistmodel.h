#pragma once
// The rows of the channel list: the playlist after the search and the two menus, numbered in
// that order. Changing the filter swaps the row numbers only; no row object is ever made.
#include "sources/channelindex.h"

#include <QAbstractListModel>
#include <memory>
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

    // The playlist as the loader prepared it; null shows no rows.
    void setIndex(std::shared_ptr<const ChannelIndex> index);
    void setFilter(const ChannelFilter &filter);
    const ChannelFilter &filter() const { return m_filter; }

    const QList<PlaylistEntry> &playlist() const { return m_index->playlist(); }
    const ChannelIndex &channelIndex() const { return *m_index; }
    const PlaylistEntry &entry(int row) const { return playlist().at(m_rows[size_t(row)]); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    void refilter();

    std::shared_ptr<const ChannelIndex> m_index;
    ChannelFilter m_filter;
    ChannelFilter m_lastFilter; // what m_rows were found for
    std::vector<int> m_rows;
};
