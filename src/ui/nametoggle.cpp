#include "nametoggle.h"

#include "keyboardreach.h"
#include "surface/icons.h"

#include <QPainter>
#include <QPainterPath>

NameToggle::NameToggle(QWidget *parent)
    : QAbstractButton(parent)
{
    setFixedSize(sizeHint());
    KeyboardReach::reachable(this);
    setAttribute(Qt::WA_Hover);
}

void NameToggle::setExpanded(bool expanded)
{
    m_expanded = expanded;
    setToolTip(expanded ? QStringLiteral("Hide movie or playlist name")
                        : QStringLiteral("Add an optional movie or playlist name"));
    update();
}

void NameToggle::enterEvent(QEnterEvent *event)
{
    QAbstractButton::enterEvent(event);
    setHovered(true);
}

void NameToggle::leaveEvent(QEvent *event)
{
    QAbstractButton::leaveEvent(event);
    setHovered(false);
}

void NameToggle::setHovered(bool hovered)
{
    if (m_hovered == hovered)
        return;
    m_hovered = hovered;
    update();
    Q_EMIT hoveredChanged(hovered);
}

void NameToggle::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath face;
    face.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
    const QColor accent = palette().color(QPalette::Highlight);
    QColor tint = accent;
    tint.setAlphaF(m_hovered ? 0.24f : 0.1f);
    painter.fillPath(face, tint);
    KeyboardReach::paintFocusRing(painter, this, QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 5);
    painter.translate(width() / 2.0, height() / 2.0);
    if (m_expanded)
        painter.rotate(90);
    painter.setPen(accent.darker(115));
    painter.setFont(Icons::font(16));
    painter.drawText(QRectF(-width() / 2.0, -height() / 2.0, width(), height()), Qt::AlignCenter,
                     Icons::glyph(u"chevron.right"));
}
