#include "channelrowdelegate.h"

#include "sources/displaytext.h"

#include "channellistmodel.h"
#include "channellogocache.h"
#include "surface/icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmapCache>

namespace {

QFont sizedFont(const QFont &base, qreal pixels, QFont::Weight weight)
{
    QFont font = base;
    font.setPixelSize(qRound(pixels));
    font.setWeight(weight);
    return font;
}

} // namespace

ChannelRowDelegate::RowShapes ChannelRowDelegate::rowShapes(const QRectF &row)
{
    RowShapes shapes;
    // The row card, with the spacing to the next row left below it.
    shapes.card = row.adjusted(1.5, 0.5, -1.5, -rowSpacing - 0.5);
    shapes.logoBox = QRectF(shapes.card.left() + 7, shapes.card.center().y() - logoHeight / 2.0,
                            logoWidth, logoHeight);
    shapes.badge = QRectF(shapes.card.right() - 8 - badgeSide,
                          shapes.card.center().y() - badgeSide / 2.0, badgeSide, badgeSide);
    return shapes;
}

QPixmap ChannelRowDelegate::decoration(QSize size, qreal ratio, bool hovered, const QColor &accent)
{
    // Antialiased shapes are filled by Qt's raster engine across a thread pool, a round trip
    // per shape; the rows share a few looks, drawn once and copied after that.
    const QString key = QStringLiteral("lumo-channel-row-%1x%2@%3-%4-%5")
                            .arg(size.width())
                            .arg(size.height())
                            .arg(ratio)
                            .arg(int(hovered))
                            .arg(accent.rgba());
    QPixmap picture;
    if (QPixmapCache::find(key, &picture))
        return picture;
    picture = QPixmap((QSizeF(size) * ratio).toSize());
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor primary(Qt::black);
    const RowShapes shapes = rowShapes(QRectF(QPointF(), QSizeF(size)));

    QPainterPath cardShape;
    cardShape.addRoundedRect(shapes.card, 8, 8);
    painter.fillPath(cardShape.translated(0, 1), QColor(0, 0, 0, 10));
    painter.fillPath(cardShape, QColor(Qt::white));
    QColor outline = hovered ? accent : primary;
    outline.setAlphaF(hovered ? 0.5f : 0.1f);
    painter.setPen(QPen(outline, 1));
    painter.drawPath(cardShape);

    QPainterPath logoShape;
    logoShape.addRoundedRect(shapes.logoBox, 6, 6);
    QColor logoFill = primary;
    logoFill.setAlphaF(0.08f);
    painter.fillPath(logoShape, logoFill);
    QColor logoLine = primary;
    logoLine.setAlphaF(0.15f);
    painter.setPen(QPen(logoLine, 0.6));
    painter.drawPath(logoShape);

    QColor badgeFill = accent;
    if (!hovered)
        badgeFill.setAlphaF(0.12f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(badgeFill);
    painter.drawEllipse(shapes.badge);
    painter.end();
    QPixmapCache::insert(key, picture);
    return picture;
}

ChannelRowDelegate::ChannelRowDelegate(ChannelLogoCache &logos, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_logos(logos)
{ }

QSize ChannelRowDelegate::sizeHint(const QStyleOptionViewItem &, const QModelIndex &index) const
{
    const bool guide = index.data(ChannelListModel::HasGuideRole).toBool();
    return {200, rowHeight + rowSpacing + (guide ? programmeLineHeight : 0)};
}

void ChannelRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    // The row under the pointer, or the keyboard's row while the list has the focus.
    const bool hovered = option.state.testFlag(QStyle::State_MouseOver)
        || option.state.testFlag(QStyle::State_HasFocus);
    const QColor accent = option.palette.color(QPalette::Highlight);
    // The rows are light cards whatever the list's own background.
    const QColor primary(Qt::black);
    const RowShapes shapes = rowShapes(QRectF(option.rect));
    const QRectF &card = shapes.card;
    const QRectF &logoBox = shapes.logoBox;
    const QRectF &badge = shapes.badge;
    painter->drawPixmap(
        option.rect.topLeft(),
        decoration(option.rect.size(), painter->device()->devicePixelRatioF(), hovered, accent));

    const QPixmap logo = m_logos.logo(index.data(ChannelListModel::LogoRole).toUrl());
    if (!logo.isNull()) {
        const QSizeF fitted
            = QSizeF(logo.size()).scaled(logoBox.size() - QSizeF(4, 4), Qt::KeepAspectRatio);
        QRectF target(QPointF(), fitted);
        target.moveCenter(logoBox.center());
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->drawPixmap(target, logo, QRectF(logo.rect()));
    } else {
        QColor ink = primary;
        ink.setAlphaF(0.55f);
        painter->setPen(ink);
        painter->setFont(Icons::font(13));
        painter->drawText(logoBox.adjusted(0, 2, 0, -9), Qt::AlignCenter, Icons::glyph(u"tv.fill"));
        painter->setFont(sizedFont(option.font, 7, QFont::Bold));
        painter->drawText(logoBox.adjusted(0, 0, 0, -1), Qt::AlignHCenter | Qt::AlignBottom,
                          QString::number(index.data(ChannelListModel::NumberRole).toInt()));
    }

    // The play badge's symbol.
    painter->setPen(hovered ? QColor(Qt::white) : accent);
    painter->setFont(Icons::font(14));
    painter->drawText(badge, Qt::AlignCenter, Icons::glyph(u"play.fill"));

    // Name over the country and group line, both in the card's first two lines.
    const bool guide = index.data(ChannelListModel::HasGuideRole).toBool();
    const QRectF lines = guide ? card.adjusted(0, 0, 0, -programmeLineHeight) : card;
    const qreal textLeft = logoBox.right() + 9;
    const qreal textWidth = badge.left() - 8 - textLeft;
    const QFont nameFont = sizedFont(option.font, 12.5, QFont::DemiBold);
    const QFont metadataFont = sizedFont(option.font, 9.5, QFont::Normal);
    const QRectF nameArea(textLeft, lines.top() + 5, textWidth, lines.height() / 2 - 3);
    const QRectF metadataArea(textLeft, lines.center().y() + 1, textWidth, lines.height() / 2 - 6);
    painter->setFont(nameFont);
    painter->setPen(primary);
    painter->drawText(nameArea, Qt::AlignLeft | Qt::AlignVCenter,
                      QFontMetrics(nameFont).elidedText(DisplayText::clean(index.data().toString()),
                                                        Qt::ElideRight, int(textWidth)));
    QColor secondary = primary;
    secondary.setAlphaF(0.55f);
    painter->setFont(metadataFont);
    painter->setPen(secondary);
    painter->drawText(
        metadataArea, Qt::AlignLeft | Qt::AlignVCenter,
        QFontMetrics(metadataFont)
            .elidedText(DisplayText::clean(index.data(ChannelListModel::MetadataRole).toString()),
                        Qt::ElideRight, int(textWidth)));
    if (guide)
        paintProgramme(painter, option, index,
                       QRectF(textLeft, lines.bottom() - 3, textWidth, programmeLineHeight));
    painter->restore();
}

void ChannelRowDelegate::paintProgramme(QPainter *painter, const QStyleOptionViewItem &option,
                                        const QModelIndex &index, const QRectF &area) const
{
    const QString programme = index.data(ChannelListModel::ProgrammeRole).toString();
    if (programme.isEmpty())
        return;
    const QFont font = sizedFont(option.font, 9, QFont::Normal);
    QColor dim(Qt::black);
    dim.setAlphaF(0.4f);
    painter->setFont(font);
    painter->setPen(dim);
    const QRectF textArea = area.adjusted(0, 0, 0, -4);
    painter->drawText(textArea, Qt::AlignLeft | Qt::AlignVCenter,
                      QFontMetrics(font).elidedText(programme, Qt::ElideRight, int(area.width())));
    // The bar: a faint track, filled in the accent colour as far as the programme has run.
    const QRectF track(area.left(), area.bottom() - 3, area.width(), 2);
    QColor trackColour(Qt::black);
    trackColour.setAlphaF(0.08f);
    painter->setPen(Qt::NoPen);
    painter->fillRect(track, trackColour);
    const double progress = index.data(ChannelListModel::ProgrammeProgressRole).toDouble();
    QColor fill = option.palette.color(QPalette::Highlight);
    fill.setAlphaF(0.7f);
    painter->fillRect(QRectF(track.topLeft(), QSizeF(track.width() * progress, track.height())),
                      fill);
}
