#include "displaytext.h"

#include <algorithm>

namespace DisplayText {
namespace {

bool directionControl(char16_t c)
{
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

bool controlCharacter(char16_t c)
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F);
}

} // namespace

QString clean(const QString &text)
{
    const auto unwanted = [](QChar c) {
        return controlCharacter(c.unicode()) || directionControl(c.unicode());
    };
    if (std::none_of(text.cbegin(), text.cend(), unwanted))
        return text;
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        if (!unwanted(c))
            result.append(c);
        else if (controlCharacter(c.unicode()) && c.isSpace())
            result.append(u' '); // a tab or a line break still parts the words it parted
    }
    return result;
}

QString forMenu(const QString &text, qsizetype maxCharacters)
{
    QString shown = clean(text);
    if (shown.size() > maxCharacters) {
        qsizetype cut = maxCharacters - 1;
        if (cut > 0 && shown.at(cut - 1).isHighSurrogate())
            --cut;
        shown = shown.first(cut).trimmed() + QChar(0x2026);
    }
    return shown.replace(u'&', QStringLiteral("&&"));
}

} // namespace DisplayText
