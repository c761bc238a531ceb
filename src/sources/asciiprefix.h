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
// nearly every line and value of a playlist does: every character Qt trims is a control
// character, a space or beyond ASCII.
inline QStringView trimmedText(QStringView text)
{
    const auto plain = [](QChar c) {
        return c.unicode() > 0x20 && c.unicode() < 0x7F;
    };
    if (!text.isEmpty() && plain(text.front()) && plain(text.back()))
        return text;
    return text.trimmed();
}
