#pragma once
// The lines of a playlist's bytes, handed over one at a time as UTF-16, as if the whole text had
// been decoded first (UTF-8, or Latin-1 for bytes that are not UTF-8) and cut at its line
// breaks. Plain ASCII lines, nearly all of a real list, are widened without decoding.
#include <QByteArrayView>
#include <QStringView>

#include <functional>

namespace PlaylistLines {

enum class Encoding { utf8, latin1 };
enum class Walk { finished, stopped, notUtf8 };

// The characters that end a line: LF, VT, FF, CR, NEL, LINE and PARAGRAPH SEPARATOR.
inline bool isLineBreak(char16_t c)
{
    return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}
inline bool isAsciiLineBreak(uchar byte)
{
    return byte >= 0x0A && byte <= 0x0D;
}

// visit(line, ascii, pieceStart, firstInPiece) for each line, untrimmed, until it returns
// false. A piece is the bytes between two ASCII line breaks, pieceStart the offset of its first
// byte; a piece may decode to several lines (NEL, LINE and PARAGRAPH SEPARATOR). ascii is the
// line's bytes when it is plain ASCII, one for each of its characters, and null otherwise; such
// a line that is neither blank nor a comment (its first character other than a space or a tab
// is not "#") comes as its bytes alone, never empty, with a null line, as most of it is an address
// read as bytes. The line is valid only during the call. notUtf8 when read as UTF-8 and the bytes
// are not; the lines handed over until then are to be read again as Latin-1.
using Visit = std::function<bool(QStringView line, QByteArrayView ascii, qsizetype pieceStart,
                                 bool firstInPiece)>;
Walk walk(QByteArrayView bytes, Encoding encoding, const Visit &visit);

} // namespace PlaylistLines
