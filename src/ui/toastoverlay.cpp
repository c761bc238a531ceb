#include "toastoverlay.h"

#include "sources/displaytext.h"

#include "noticelayout.h"

#include <QEasingCurve>
#include <QPainter>
#include <QPainterPath>
#include <QVariantAnimation>

#include <algorithm>
#include <utility>

namespace {
constexpr int padding = 14;
constexpr int shadowMargin = 8;
constexpr qreal cornerRadius = 9;
} // namespace

ToastOverlay::ToastOverlay(QWidget *parent)
    : QWidget(parent)
    , m_animation(new QVariantAnimation(this))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_TranslucentBackground);
    QFont font = this->font();
    font.setPixelSize(13);
    font.setWeight(QFont::Medium);
    setFont(font);
    hide();
    m_animation->setDuration(animationMs);
    m_animation->setEasingCurve(QEasingCurve::InOutQuad);
    connect(m_animation, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        m_progress = value.toDouble();
        place(m_area);
        update();
    });
    connect(m_animation, &QVariantAnimation::finished, this, [this] {
        if (m_progress <= 0)
            hide();
    });
}

void ToastOverlay::setMessage(const QString &message, const QString &detail)
{
    if (message.isNull() == m_message.isNull() && message == m_message && detail == m_detail)
        return;
    m_message = message;
    m_detail = detail;
    if (message.isNull()) {
        animateTo(0);
        return;
    }
    // Texts from servers and files are shown without controls or direction overrides.
    m_shownText = DisplayText::clean(message);
    m_shownDetail = DisplayText::clean(detail);
    m_laidOutWidth = -1;
    show();
    raise();
    place(m_area);
    animateTo(1);
}

void ToastOverlay::animateTo(double end)
{
    m_animation->stop();
    m_animation->setStartValue(m_progress);
    m_animation->setEndValue(end);
    m_animation->start();
}

QFont ToastOverlay::detailFont() const
{
    QFont detail = font();
    detail.setPixelSize(11);
    detail.setWeight(QFont::Normal);
    return detail;
}

void ToastOverlay::place(const QRect &area)
{
    m_area = area;
    const int areaWidth = area.width();
    const QFontMetrics metrics(font());
    const QFontMetrics detailMetrics(detailFont());
    const int available = std::max(areaWidth - 2 * inset, 2 * padding);
    // Laid out once per text and width, not on every step of the animation.
    if (m_laidOutWidth != available) {
        m_laidOutWidth = available;
        m_lines = NoticeLayout::lines(m_shownText, font(), available - 2 * padding, maxTextLines);
        m_detailLines = m_shownDetail.isEmpty()
            ? QStringList()
            : NoticeLayout::lines(m_shownDetail, detailFont(), available - 2 * padding,
                                  maxDetailLines);
    }
    int textWidth = 0;
    for (const QString &line : std::as_const(m_lines))
        textWidth = std::max(textWidth, metrics.horizontalAdvance(line) + 1);
    for (const QString &line : std::as_const(m_detailLines))
        textWidth = std::max(textWidth, detailMetrics.horizontalAdvance(line) + 1);
    const int plateWidth = std::min(textWidth + 2 * padding, available);
    const int textHeight = metrics.height() * int(m_lines.size())
        + detailMetrics.height() * int(m_detailLines.size());
    const int plateHeight = std::max(minimumHeight, textHeight + 12);
    const int width = plateWidth + 2 * shadowMargin;
    const int height = plateHeight + 2 * shadowMargin;
    // Slides from just above the area's top edge down to its inset.
    const int shownY = area.top() + inset - shadowMargin;
    const int hiddenY = area.top() - height;
    const int y = int(hiddenY + (shownY - hiddenY) * m_progress);
    setGeometry(area.left() + (areaWidth - width) / 2, y, width, height);
}

void ToastOverlay::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(std::clamp(m_progress, 0.0, 1.0));
    const QRectF plate
        = QRectF(rect()).adjusted(shadowMargin, shadowMargin, -shadowMargin, -shadowMargin);
    // A soft shadow: rings of falling opacity around the plate, offset a little downwards.
    for (int ring = shadowMargin; ring > 0; --ring) {
        QPainterPath path;
        const QRectF area = plate.adjusted(-ring, -ring + 2, ring, ring + 2);
        path.addRoundedRect(area, cornerRadius + ring, cornerRadius + ring);
        painter.fillPath(path, QColor(0, 0, 0, int(0.35 * 255 / (shadowMargin * 1.6))));
    }
    QPainterPath shape;
    shape.addRoundedRect(plate, cornerRadius, cornerRadius);
    painter.fillPath(shape, QColor(0, 0, 0, int(0.82 * 255)));
    painter.setPen(Qt::white);
    const QRectF textArea = plate.adjusted(padding, 0, -padding, 0);
    if (m_detailLines.isEmpty()) {
        painter.drawText(textArea, Qt::AlignCenter, m_lines.join(u'\n'));
        return;
    }
    // The text and its detail, centred together.
    const QFontMetrics metrics(font());
    const QFontMetrics detailMetrics(detailFont());
    const qreal textHeight = metrics.height() * m_lines.size();
    const qreal detailHeight = detailMetrics.height() * m_detailLines.size();
    const qreal top = textArea.top() + (textArea.height() - textHeight - detailHeight) / 2;
    painter.drawText(QRectF(textArea.left(), top, textArea.width(), textHeight), Qt::AlignCenter,
                     m_lines.join(u'\n'));
    painter.setFont(detailFont());
    painter.setPen(QColor(255, 255, 255, int(0.72 * 255)));
    painter.drawText(QRectF(textArea.left(), top + textHeight, textArea.width(), detailHeight),
                     Qt::AlignCenter, m_detailLines.join(u'\n'));
}
