#pragma once

// Whether text starts with an ASCII literal, compared inline: the parser asks this of every line
// of a huge playlist, where a call into Qt's general comparison costs more than the test.

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
