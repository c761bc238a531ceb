#pragma once
// The product's symbols, drawn with the Material Icons font: one mapping from each symbol's
// name to its glyph.
#include <QColor>
#include <QFont>
#include <QIcon>
#include <QString>
#include <QStringList>

namespace Icons {

inline constexpr char fontFamily[] = "Material Icons";

// The icon font at the given pixel size.
QFont font(int pixelSize);
// The glyph standing for symbol, or an empty string for a name the mapping does not know.
QString glyph(QStringView symbol);
// Every symbol name the mapping knows.
QStringList symbols();

// The symbol as an icon for menus and buttons.
QIcon icon(QStringView symbol, const QColor &colour = QColor(0, 0, 0, 224), int pixelSize = 16);

} // namespace Icons
