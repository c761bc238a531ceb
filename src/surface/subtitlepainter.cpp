#include "subtitlepainter.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <vector>

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

namespace {

// A paragraph's lines, each word measured once: a long one costs no more than its length.
void wrap(QStringView paragraph, const QFontMetricsF &metrics, double width, QStringList &into)
{
    const double space = metrics.horizontalAdvance(u' ');
    QString line;
    double lineWidth = 0;
    for (const QStringView word : paragraph.split(u' ', Qt::SkipEmptyParts)) {
        const double wordWidth = metrics.horizontalAdvance(word.toString());
        if (!line.isEmpty() && lineWidth + space + wordWidth > width) {
            into.append(line);
            line.clear();
            lineWidth = 0;
        }
        if (!line.isEmpty()) {
            line += u' ';
            lineWidth += space;
        }
        line += word;
        lineWidth += wordWidth;
    }
    if (!line.isEmpty())
        into.append(line);
}

QFont subtitleFont(double size)
{
    QFont font(QStringLiteral("sans-serif"));
    font.setPixelSize(qRound(size));
    font.setWeight(QFont::DemiBold);
    return font;
}

double baselineGap(double size, const QFontMetricsF &metrics)
{
    return size * mpvMargin / mpvFontSize + metrics.descent();
}

// The last text and size drawn, laid out and drawn into an image once: a subtitle stands for
// many frames, and outlining text is far dearer than copying an image.
struct Layout
{
    QString text;
    QSizeF visible;
    qreal ratio = 0;
    QImage image;
    QPointF at; // of the image, from the picture's top left
};

} // namespace

QStringList lines(const QString &text, const QFontMetricsF &metrics, double width, qsizetype last)
{
    // From the last paragraph back, so that only the lines that will show are wrapped.
    std::vector<QStringList> paragraphs; // the last one first
    qsizetype count = 0;
    for (qsizetype end = text.size(); end >= 0 && count < last;) {
        const qsizetype start = end == 0 ? -1 : text.lastIndexOf(u'\n', end - 1);
        QStringList paragraph;
        wrap(QStringView(text).sliced(start + 1, end - start - 1).toString().simplified(), metrics,
             width, paragraph);
        count += paragraph.size();
        paragraphs.push_back(std::move(paragraph));
        end = start;
    }
    QStringList result;
    result.reserve(std::min(count, last));
    for (auto paragraph = paragraphs.rbegin(); paragraph != paragraphs.rend(); ++paragraph)
        result += *paragraph;
    if (result.size() > last)
        result = result.sliced(result.size() - last);
    return result;
}

QStringList shownLines(const QString &text, QSizeF visible)
{
    const double size = fontPixelSize(visible);
    const QFontMetricsF metrics(subtitleFont(size));
    // Lines above the picture's top would not be seen.
    const double room = visible.height() - baselineGap(size, metrics) - metrics.ascent();
    const qsizetype fit = room < 0 ? 0 : 1 + qsizetype(room / metrics.lineSpacing());
    return lines(text, metrics, visible.width() * widthShare, fit);
}

void paint(QPainter &painter, const QString &text, const QRectF &visible)
{
    if (visible.isEmpty() || text.trimmed().isEmpty())
        return;
    thread_local Layout layout;
    const qreal ratio = painter.device() ? painter.device()->devicePixelRatioF() : 1;
    if (layout.text != text || layout.visible != visible.size() || layout.ratio != ratio) {
        const double size = fontPixelSize(visible.size());
        const QFont font = subtitleFont(size);
        const QFontMetricsF metrics(font);
        const QStringList shown = shownLines(text, visible.size());
        QPainterPath path;
        double baseline = visible.height() - baselineGap(size, metrics)
            - metrics.lineSpacing() * double(shown.size() - 1);
        for (const QString &line : shown) {
            const double x = visible.width() / 2 - metrics.horizontalAdvance(line) / 2;
            path.addText(QPointF(x, baseline), font, line);
            baseline += metrics.lineSpacing();
        }
        const double border = std::max(1.5, size * mpvBorder / mpvFontSize);
        // Only the part of the picture the text covers, outline included.
        const QRectF area = path.boundingRect()
                                .adjusted(-2 * border, -2 * border, 2 * border, 2 * border)
                                .intersected(QRectF(QPointF(0, 0), visible.size()));
        QImage image((area.size() * ratio).toSize().expandedTo({1, 1}),
                     QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        QPainter imagePainter(&image);
        imagePainter.setRenderHint(QPainter::Antialiasing);
        imagePainter.translate(-area.topLeft());
        imagePainter.strokePath(
            path, QPen(Qt::black, 2 * border, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        imagePainter.fillPath(path, Qt::white);
        imagePainter.end();
        layout = {text, visible.size(), ratio, image, area.topLeft()};
    }
    painter.save();
    painter.setClipRect(visible);
    painter.drawImage(visible.topLeft() + layout.at, layout.image);
    painter.restore();
}

} // namespace SubtitlePainter
