#include "xmltvtime.h"

#include <QString>

#include <cmath>

namespace XmltvTime {

namespace {

// The value of count digits at text[at]; -1 when any is not a digit.
int digits(QByteArrayView text, qsizetype at, int count)
{
    if (at + count > text.size())
        return -1;
    int value = 0;
    for (int i = 0; i < count; ++i) {
        const char c = text[at + i];
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

// Days from 1970-01-01 to the civil date (Howard Hinnant's days_from_civil).
qint64 daysFromCivil(qint64 year, unsigned month, unsigned day)
{
    year -= month <= 2 ? 1 : 0;
    const qint64 era = (year >= 0 ? year : year - 399) / 400;
    const unsigned yearOfEra = unsigned(year - era * 400);
    const unsigned dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + qint64(dayOfEra) - 719468;
}

bool isLeap(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(int year, int month)
{
    static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeap(year) ? 29 : days[month - 1];
}

} // namespace

std::optional<qint64> parse(QByteArrayView text)
{
    const int year = digits(text, 0, 4);
    const int month = digits(text, 4, 2);
    const int day = digits(text, 6, 2);
    const int hour = digits(text, 8, 2);
    const int minute = digits(text, 10, 2);
    if (year < 0 || month < 1 || month > 12 || day < 1 || hour < 0 || hour > 23 || minute < 0
        || minute > 59 || day > daysInMonth(year, month))
        return std::nullopt;
    qsizetype at = 12;
    int second = 0;
    if (digits(text, at, 2) >= 0) {
        second = digits(text, at, 2);
        if (second > 59)
            return std::nullopt;
        at += 2;
    }
    qint64 zoneSeconds = 0;
    qsizetype afterSpaces = at;
    while (afterSpaces < text.size() && text[afterSpaces] == ' ')
        ++afterSpaces;
    if (afterSpaces < text.size()) {
        const char sign = text[afterSpaces];
        const int zoneHours = digits(text, afterSpaces + 1, 2);
        const int zoneMinutes = digits(text, afterSpaces + 3, 2);
        if ((sign != '+' && sign != '-') || zoneHours < 0 || zoneHours > 23 || zoneMinutes < 0
            || zoneMinutes > 59 || afterSpaces + 5 != text.size())
            return std::nullopt;
        zoneSeconds = (zoneHours * 3600 + zoneMinutes * 60) * (sign == '+' ? 1 : -1);
    } else if (afterSpaces != at) {
        return std::nullopt; // spaces and no zone after them
    }
    const qint64 local = daysFromCivil(year, unsigned(month), unsigned(day)) * 86400 + hour * 3600
        + minute * 60 + second;
    return local - zoneSeconds;
}

} // namespace XmltvTime
