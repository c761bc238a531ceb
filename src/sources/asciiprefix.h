#pragma once

// Whether text starts with an ASCII literal, and text trimmed, inline: the parser asks this of
// every line of a huge playlist, where a call into Qt's general comparison costs more than the
// test.

#include <QStringView>

template<qsizetype N>
constexpr bool startsWithAscii(QStringView text, const char16_t (&prefix)[N])
{
    constexpr qsizetype size = N - 1; // without the terminating NUL
    if (text.size() < size)
        return false;
    for (qsizetype i = 0; i < size; ++i) {
        if (text[i].unicode() != prefix[i])
            return false;
    }
    return true;
}

// text.trimmed(), without a call into Qt when text neither starts nor ends with a space, as
// nearly every line and value of a playlist does. Every character Qt trims is a control
// character, a space, or one of the few other spaces below; a character in these ranges is
// left to Qt to judge.
inline QStringView trimmedText(QStringView text)
{
    const auto plain = [](QChar c) {
        const char16_t u = c.unicode();
        return u > 0x20 && u != 0x7F && (u < 0x80 || u > 0xA0) && u != 0x1680
            && (u < 0x2000 || u > 0x205F) && u != 0x3000;
    };
    if (!text.isEmpty() && plain(text.front()) && plain(text.back()))
        return text;
    return text.trimmed();
}
