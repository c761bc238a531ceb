#pragma once
// Paints one channel row: the logo box (or a television symbol and the row's number while the
// logo is missing), the name over its country and group, and the round play badge. The hovered
// row is outlined in the accent colour and its badge filled. With a programme guide loaded,
// rows are taller: the programme on now stands as a third, dimmer line over a thin bar of how
// far into it the moment is.
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
    // What a row grows by with a guide loaded.
    static constexpr int programmeLineHeight = 15;

    ChannelRowDelegate(ChannelLogoCache &logos, QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    struct RowShapes
    {
        QRectF card;
        QRectF logoBox;
        QRectF badge;
    };
    static RowShapes rowShapes(const QRectF &row);
    // The card, logo box and badge of a row of this size and look, without its content.
    static QPixmap decoration(QSize size, qreal ratio, bool hovered, const QColor &accent);

    void paintProgramme(QPainter *painter, const QStyleOptionViewItem &option,
                        const QModelIndex &index, const QRectF &area) const;

    ChannelLogoCache &m_logos;
};
