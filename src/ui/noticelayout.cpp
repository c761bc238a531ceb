#include "noticelayout.h"

#include <QFontMetrics>
#include <QTextLayout>

namespace NoticeLayout {
namespace {

// The text up to count characters, never splitting a surrogate pair.
QString head(const QString &text, qsizetype count)
{
    if (count >= text.size())
        return text;
    if (count > 0 && text.at(count - 1).isHighSurrogate())
        --count;
    return text.first(count);
}

// rest on one line of width, ending in an ellipsis whether or not it fits: more text follows.
QString withEllipsis(const QString &rest, const QFontMetrics &metrics, int width)
{
    QString line = metrics.elidedText(rest, Qt::ElideRight, width);
    if (line.endsWith(ellipsis))
        return line;
    line = line.trimmed();
    while (!line.isEmpty() && metrics.horizontalAdvance(line + ellipsis) > width)
        line = head(line, line.size() - 1);
    return line + ellipsis;
}

} // namespace

QStringList lines(const QString &text, const QFont &font, int width, int maxLines)
{
    // Rounded advances: a pixel to spare keeps a text that fits from being cut.
    const int room = std::max(1, width - 1);
    const QFontMetrics metrics(font);
    maxLines = std::max(1, maxLines);
    // No line holds more characters than it has pixels: nothing past that many can show.
    const QString shown = head(text, qsizetype(maxLines + 1) * (room + 1));
    QTextLayout layout(shown, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    QList<std::pair<int, int>> pieces; // start, length
    while (pieces.size() <= maxLines) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(room);
        pieces.append({line.textStart(), line.textLength()});
    }
    layout.endLayout();

    QStringList result;
    const bool whole = shown.size() == text.size() && pieces.size() <= maxLines;
    const qsizetype kept = whole ? pieces.size() : maxLines - 1;
    for (qsizetype i = 0; i < kept && i < pieces.size(); ++i) {
        const QString line = shown.sliced(pieces[i].first, pieces[i].second);
        // The space a line broke at belongs to neither line.
        result.append(line.endsWith(u' ') ? line.trimmed() : line);
    }
    if (!whole) {
        const qsizetype from = kept < pieces.size() ? pieces[kept].first : shown.size();
        result.append(withEllipsis(shown.sliced(from), metrics, room));
    }
    if (result.isEmpty())
        result.append(QString());
    return result;
}

} // namespace NoticeLayout
