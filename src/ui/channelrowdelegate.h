#pragma once
// Paints one channel row: the logo box (or a television symbol and the row's number while the
// logo is missing), the name over its country and group, and the round play badge. The hovered
// row is outlined in the accent colour and its badge filled.
#include <QStyledItemDelegate>

class ChannelLogoCache;

class ChannelRowDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    static constexpr int rowHeight = 41;
    static constexpr int rowSpacing = 7;
    static constexpr int logoHeight = 29;
    static constexpr int logoWidth = 44;
    static constexpr int badgeSide = 23;

    ChannelRowDelegate(ChannelLogoCache &logos, QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    ChannelLogoCache &m_logos;
};
