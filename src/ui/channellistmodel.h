#pragma once
// The rows of the channel list: the playlist after the search and the two menus, numbered in
// that order. Changing the filter swaps the row numbers only; no row object is ever made.
#include "guide/programmeguide.h"
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
        // With a programme guide loaded: the programme on now ("20:00–21:00  Title"), empty
        // when the channel has none; nothing without a guide.
        ProgrammeRole,
        ProgrammeProgressRole, // 0 … 1 through the programme on now
        HasGuideRole, // a guide is loaded: rows have room for the programme line
    };

    explicit ChannelListModel(QObject *parent = nullptr);

    // The playlist as the loader prepared it; null shows no rows.
    void setIndex(std::shared_ptr<const ChannelIndex> index);
    void setFilter(const ChannelFilter &filter);
    // The guide whose programmes the rows show; an empty one shows none.
    void setProgrammeGuide(std::shared_ptr<const ProgrammeGuide> guide);
    bool hasGuide() const { return !m_guide->isEmpty(); }
    // A programme began or ended: the rows on screen are drawn again.
    void programmesChanged();
    const ChannelFilter &filter() const { return m_filter; }

    const QList<PlaylistEntry> &playlist() const { return m_index->playlist(); }
    const ChannelIndex &channelIndex() const { return *m_index; }
    const PlaylistEntry &entry(int row) const { return playlist().at(m_rows[size_t(row)]); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    void refilter();

    std::shared_ptr<const ChannelIndex> m_index;
    std::shared_ptr<const ProgrammeGuide> m_guide;
    ChannelFilter m_filter;
    ChannelFilter m_lastFilter; // what m_rows were found for
    std::vector<int> m_rows;
};
