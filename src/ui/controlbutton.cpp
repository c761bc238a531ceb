#include "controlbutton.h"

#include "keyboardreach.h"
#include "surface/icons.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int faceHeight = 19;
constexpr qreal cornerRadius = 4;

// Material glyphs sit inside a padded em square; a slightly larger size matches the face.
int glyphPixels(ControlButton::Look look)
{
    switch (look) {
    case ControlButton::Look::prominent:
        return 15;
    case ControlButton::Look::record:
        return 14;
    case ControlButton::Look::plain:
        break;
    }
    return 13;
}

} // namespace

ControlButton::ControlButton(Look look, QWidget *parent)
    : QAbstractButton(parent)
    , m_look(look)
{
    KeyboardReach::reachable(this);
    setCursor(Qt::ArrowCursor);
    setFixedSize(sizeHint());
}

void ControlButton::setSymbol(const QString &symbol)
{
    if (m_symbol == symbol)
        return;
    m_symbol = symbol;
    update();
}

void ControlButton::setSelected(bool selected)
{
    if (m_selected == selected)
        return;
    m_selected = selected;
    update();
}

void ControlButton::setRecordingLook(bool recording)
{
    if (m_recordingLook == recording)
        return;
    m_recordingLook = recording;
    update();
}

QSize ControlButton::sizeHint() const
{
    return {m_look == Look::prominent ? 27 : 23, faceHeight};
}

void ControlButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF face = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath shape;
    shape.addRoundedRect(face, cornerRadius, cornerRadius);

    const bool pressed = isDown();
    QColor fill = m_selected ? QColor(0, 0, 0, int(0.13 * 255)) : QColor(255, 255, 255, 107);
    if (pressed)
        fill = QColor(0, 0, 0, 50);
    painter.fillPath(shape, fill);
    if (m_look == Look::record) {
        QColor red(Qt::red);
        red.setAlphaF(m_recordingLook ? 0.65f : 0.2f);
        painter.strokePath(shape, QPen(red, 0.7));
    } else {
        painter.strokePath(shape, QPen(QColor(0, 0, 0, int(0.14 * 255)), 0.6));
    }

    QColor ink = m_look == Look::record ? QColor(Qt::red) : QColor(0, 0, 0, int(0.88 * 255));
    if (!isEnabled())
        ink.setAlphaF(ink.alphaF() * 0.35f);
    painter.setPen(ink);
    painter.setFont(Icons::font(glyphPixels(m_look)));
    painter.drawText(rect(), Qt::AlignCenter, Icons::glyph(m_symbol));
    KeyboardReach::paintFocusRing(painter, this, face, cornerRadius);
}
