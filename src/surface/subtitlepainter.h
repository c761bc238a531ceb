#pragma once
// Subtitles drawn over the part of the picture the viewer sees, upright, in the look of mpv's
// own: white sans-serif text with a black outline, centred near the bottom. Used where the
// picture is cropped or turned, so that mpv's subtitles would be cut or lie on their side.
#include <QFontMetricsF>
#include <QRectF>
#include <QStringList>
#include <limits>

class QPainter;

namespace SubtitlePainter {

// The text's size for a visible picture of this size: mpv's 55 points per 720 of height, kept
// narrow pictures from getting more than about 14 characters a line.
double fontPixelSize(QSizeF visible);

// The text's last lines, at most last of them, each no wider than width: its own line breaks,
// then breaks between words (a single word too long stays whole). Only those are laid out.
QStringList lines(const QString &text, const QFontMetricsF &metrics, double width,
                  qsizetype last = std::numeric_limits<qsizetype>::max());

// The lines drawn at the bottom of a visible picture of this size: the text's last ones, as many
// as fit its height.
QStringList shownLines(const QString &text, QSizeF visible);

// Draws text at the bottom of visible, laid out once for as long as the text and the size stay.
void paint(QPainter &painter, const QString &text, const QRectF &visible);

} // namespace SubtitlePainter
