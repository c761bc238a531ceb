#include "channellistmodel.h"

#include "programmetext.h"

#include <QDateTime>

ChannelListModel::ChannelListModel(QObject *parent)
    : QAbstractListModel(parent)
    , m_index(std::make_shared<const ChannelIndex>())
    , m_guide(std::make_shared<const ProgrammeGuide>())
{ }

void ChannelListModel::setProgrammeGuide(std::shared_ptr<const ProgrammeGuide> guide)
{
    const bool hadGuide = hasGuide();
    m_guide = guide ? std::move(guide) : std::make_shared<const ProgrammeGuide>();
    if (hadGuide != hasGuide()) {
        // Rows grow or shrink by the programme line: the view measures them again.
        Q_EMIT layoutAboutToBeChanged();
        Q_EMIT layoutChanged();
    } else {
        programmesChanged();
    }
}

void ChannelListModel::programmesChanged()
{
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0), index(int(m_rows.size()) - 1),
                           {ProgrammeRole, ProgrammeProgressRole});
}

void ChannelListModel::setIndex(std::shared_ptr<const ChannelIndex> index)
{
    m_index = index ? std::move(index) : std::make_shared<const ChannelIndex>();
    m_lastFilter = ChannelFilter();
    refilter();
}

void ChannelListModel::setFilter(const ChannelFilter &filter)
{
    if (filter == m_filter)
        return;
    m_filter = filter;
    refilter();
}

void ChannelListModel::refilter()
{
    // Typing on narrows the rows already found; anything else searches the whole playlist.
    const bool narrows = !m_lastFilter.query().isEmpty()
        && m_filter.countryCode == m_lastFilter.countryCode
        && m_filter.category == m_lastFilter.category
        && m_filter.query().contains(m_lastFilter.query());
    std::vector<int> rows = narrows ? m_index->narrow(m_rows, m_filter) : m_index->filter(m_filter);
    m_lastFilter = m_filter;
    // A reset keeps the view; the view asks again only for the rows on screen.
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

int ChannelListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant ChannelListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_rows.size()))
        return {};
    const PlaylistEntry &channel = entry(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return channel.name();
    case Qt::ToolTipRole:
        return QStringLiteral("Play ") + channel.name();
    case NumberRole:
        return index.row() + 1;
    case MetadataRole:
        return ChannelFilters::metadata(ChannelFilters::countryName(channel.countryCode()),
                                        channel.groupTitle());
    case LogoRole:
        return channel.logoURL().value_or(QUrl());
    case HasGuideRole:
        return hasGuide();
    case ProgrammeRole:
    case ProgrammeProgressRole: {
        if (!hasGuide())
            return {};
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        const ProgrammeGuide::NowNext programmes = m_guide->at(m_rows[size_t(index.row())], now);
        if (role == ProgrammeRole)
            return programmes.now ? ProgrammeText::line(*programmes.now) : QString();
        return programmes.now ? ProgrammeText::progress(*programmes.now, now) : 0.0;
    }
    default:
        return {};
    }
}
