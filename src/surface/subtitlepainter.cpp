#include "subtitlepainter.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace SubtitlePainter {

namespace {
constexpr double mpvFontSize = 55; // per 720 of the picture's height
constexpr double mpvBorder = 3;
constexpr double mpvMargin = 22;
constexpr double widthShare = 0.92; // of the picture, for the longest line
} // namespace

double fontPixelSize(QSizeF visible)
{
    const double byHeight = visible.height() * mpvFontSize / 720;
    const double byWidth = visible.width() * 0.07;
    return std::clamp(std::min(byHeight, byWidth), 12.0, 96.0);
}

QStringList lines(const QString &text, const QFontMetricsF &metrics, double width)
{
    QStringList result;
    for (const QString &paragraph : text.split(u'\n')) {
        const QStringList words = paragraph.simplified().split(u' ', Qt::SkipEmptyParts);
        QString line;
        for (const QString &word : words) {
            const QString longer = line.isEmpty() ? word : line + u' ' + word;
            if (!line.isEmpty() && metrics.horizontalAdvance(longer) > width) {
                result.append(line);
                line = word;
            } else {
                line = longer;
            }
        }
        if (!line.isEmpty())
            result.append(line);
    }
    return result;
}

void paint(QPainter &painter, const QString &text, const QRectF &visible)
{
    if (text.trimmed().isEmpty() || visible.isEmpty())
        return;
    QFont font(QStringLiteral("sans-serif"));
    const double size = fontPixelSize(visible.size());
    font.setPixelSize(qRound(size));
    font.setWeight(QFont::DemiBold);
    const QFontMetricsF metrics(font);
    const QStringList shown = lines(text, metrics, visible.width() * widthShare);
    QPainterPath path;
    double baseline = visible.bottom() - size * mpvMargin / mpvFontSize - metrics.descent()
        - metrics.lineSpacing() * double(shown.size() - 1);
    for (const QString &line : shown) {
        const double x = visible.center().x() - metrics.horizontalAdvance(line) / 2;
        path.addText(QPointF(x, baseline), font, line);
        baseline += metrics.lineSpacing();
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(visible);
    const double border = std::max(1.5, size * mpvBorder / mpvFontSize);
    painter.strokePath(path,
                       QPen(Qt::black, 2 * border, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(path, Qt::white);
    painter.restore();
}

} // namespace SubtitlePainter
