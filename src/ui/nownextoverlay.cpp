#include "nownextoverlay.h"

#include "sources/displaytext.h"

#include "programmetext.h"

#include <QPainter>
#include <QPainterPath>

namespace {
constexpr int padding = 10;
constexpr int lineHeight = 18;
constexpr int barHeight = 3;
constexpr int plateWidth = 340;

QFont pixelFont(const QFont &base, int pixels, QFont::Weight weight)
{
    QFont font = base;
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}
} // namespace

NowNextOverlay::NowNextOverlay(QWidget *parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_TranslucentBackground);
    m_hideTask.setSingleShot(true);
    m_hideTask.setInterval(shownMs);
    connect(&m_hideTask, &QTimer::timeout, this, &QWidget::hide);
    hide();
}

void NowNextOverlay::setProgrammes(const ProgrammeGuide::NowNext &programmes, qint64 moment)
{
    m_now = programmes.now ? ProgrammeText::line(*programmes.now) : QString();
    m_next = programmes.next ? ProgrammeText::line(*programmes.next) : QString();
    m_progress = programmes.now ? ProgrammeText::progress(*programmes.now, moment) : 0;
    if (m_now.isEmpty() && m_next.isEmpty()) {
        m_hideTask.stop();
        hide();
        return;
    }
    place(m_area); // as many lines as there are programmes
    update();
}

void NowNextOverlay::reveal()
{
    if (m_now.isEmpty() && m_next.isEmpty())
        return;
    show();
    raise();
    m_hideTask.start();
}

void NowNextOverlay::place(const QRect &area)
{
    m_area = area;
    const int lines = (m_now.isEmpty() ? 0 : 1) + (m_next.isEmpty() ? 0 : 1);
    const int height = 2 * padding + lines * lineHeight + (m_now.isEmpty() ? 0 : barHeight + 4);
    const int shownWidth = std::min(plateWidth, std::max(0, area.width() - 2 * inset));
    setGeometry(area.left() + inset, area.bottom() - inset - height + 1, shownWidth, height);
}

QStringList NowNextOverlay::lines() const
{
    QStringList lines;
    if (!m_now.isEmpty())
        lines.append(QStringLiteral("Now  ") + m_now);
    if (!m_next.isEmpty())
        lines.append(QStringLiteral("Next  ") + m_next);
    return lines;
}

void NowNextOverlay::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath plate;
    plate.addRoundedRect(QRectF(rect()), 10, 10);
    painter.fillPath(plate, QColor(0, 0, 0, 170));

    const QFont label = pixelFont(font(), 11, QFont::Bold);
    const QFont now = pixelFont(font(), 13, QFont::DemiBold);
    const QFont next = pixelFont(font(), 12, QFont::Normal);
    const int labelWidth = 40;
    const int textWidth = width() - 2 * padding - labelWidth;
    int top = padding;
    const auto drawLine = [&](const QString &name, const QString &text, const QFont &textFont,
                              const QColor &colour) {
        const QRect labelArea(padding, top, labelWidth, lineHeight);
        const QRect textArea(padding + labelWidth, top, textWidth, lineHeight);
        painter.setFont(label);
        painter.setPen(palette().color(QPalette::Highlight).lighter(150));
        painter.drawText(labelArea, Qt::AlignLeft | Qt::AlignVCenter, name);
        painter.setFont(textFont);
        painter.setPen(colour);
        painter.drawText(
            textArea, Qt::AlignLeft | Qt::AlignVCenter,
            QFontMetrics(textFont).elidedText(DisplayText::clean(text), Qt::ElideRight, textWidth));
        top += lineHeight;
    };
    if (!m_now.isEmpty()) {
        drawLine(QStringLiteral("Now"), m_now, now, Qt::white);
        const QRectF track(padding + labelWidth, top + 2, textWidth, barHeight);
        painter.fillRect(track, QColor(255, 255, 255, 50));
        painter.fillRect(
            QRectF(track.topLeft(), QSizeF(track.width() * m_progress, track.height())),
            palette().color(QPalette::Highlight).lighter(130));
        top += barHeight + 4;
    }
    if (!m_next.isEmpty())
        drawLine(QStringLiteral("Next"), m_next, next, QColor(255, 255, 255, 170));
}
