#include "icons.h"

#include <QHash>

namespace Icons {

QFont font(int pixelSize)
{
    QFont result(QString::fromLatin1(fontFamily));
    result.setPixelSize(pixelSize);
    return result;
}

QString glyph(QStringView symbol)
{
    // Code points of the Material Icons font.
    static const QHash<QString, char16_t> glyphs {
        {QStringLiteral("play.rectangle"), 0xe41b}, // slideshow
    };
    const auto found = glyphs.constFind(symbol.toString());
    return found == glyphs.cend() ? QString() : QString(QChar(*found));
}

} // namespace Icons
