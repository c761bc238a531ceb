#include "filtermenubutton.h"

#include "keyboardreach.h"
#include "surface/icons.h"

#include <QMenu>
#include <QPainter>
#include <QPainterPath>

namespace {
constexpr int symbolWidth = 18;
constexpr int chevronWidth = 12;
constexpr int padding = 6;
} // namespace

FilterMenuButton::FilterMenuButton(const QString &symbol, QWidget *parent)
    : QAbstractButton(parent)
    , m_symbol(symbol)
    , m_menu(new QMenu(this))
{
    setFixedHeight(buttonHeight);
    KeyboardReach::reachable(this);
    setAttribute(Qt::WA_Hover);
    connect(this, &QAbstractButton::clicked, this,
            [this] { m_menu->popup(mapToGlobal(QPoint(0, height()))); });
}

QSize FilterMenuButton::sizeHint() const
{
    const int textWidth = fontMetrics().horizontalAdvance(text());
    return {padding + symbolWidth + textWidth + 4 + chevronWidth + padding, buttonHeight};
}

void FilterMenuButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse() || isDown()) {
        QPainterPath face;
        face.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
        painter.fillPath(face, QColor(0, 0, 0, isDown() ? 30 : 16));
    }
    const QColor ink = palette().color(QPalette::WindowText);
    painter.setPen(ink);
    QRect area = rect().adjusted(padding, 0, -padding, 0);
    painter.setFont(Icons::font(15));
    painter.drawText(QRect(area.left(), 0, symbolWidth, height()), Qt::AlignCenter,
                     Icons::glyph(m_symbol));
    const QRect chevron(area.right() - chevronWidth + 1, 0, chevronWidth, height());
    painter.setFont(Icons::font(12));
    painter.drawText(chevron, Qt::AlignCenter, Icons::glyph(u"chevron.down"));
    const QRect label(area.left() + symbolWidth + 2, 0,
                      chevron.left() - 2 - (area.left() + symbolWidth + 2), height());
    painter.setFont(font());
    painter.drawText(label, Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(text(), Qt::ElideRight, label.width()));
    KeyboardReach::paintFocusRing(painter, this, QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6);
}
