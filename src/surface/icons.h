#pragma once
// The product's symbols, drawn with the Material Icons font: one mapping from each symbol's
// name to its glyph.
#include <QFont>
#include <QString>

namespace Icons {

inline constexpr char fontFamily[] = "Material Icons";

// The icon font at the given pixel size.
QFont font(int pixelSize);
// The glyph standing for symbol, or an empty string for a name the mapping does not know.
QString glyph(QStringView symbol);

} // namespace Icons
