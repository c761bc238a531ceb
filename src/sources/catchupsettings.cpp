#include "catchupsettings.h"

#include "extinfattributes.h"

#include <cmath>

namespace {

// Whole days, as lists write them; a larger count is still far beyond any archive window.
std::optional<int> readDays(QStringView text)
{
    bool ok = false;
    const int days = text.trimmed().toInt(&ok);
    if (!ok || days < 0)
        return std::nullopt;
    return std::min(days, 3650);
}

// Hours, decimals allowed, possibly negative; a day either way at the most.
std::optional<qint32> readCorrection(QStringView text)
{
    bool ok = false;
    const double hours = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(hours) || std::abs(hours) > 24)
        return std::nullopt;
    return qint32(std::lround(hours * 3600));
}

} // namespace

std::optional<CatchupMode> CatchupSettings::modeNamed(QStringView name)
{
    struct Name
    {
        QStringView text;
        CatchupMode mode;
    };
    static constexpr Name names[] = {
        {u"default", CatchupMode::standard},
        {u"append", CatchupMode::append},
        {u"shift", CatchupMode::shift},
        {u"timeshift", CatchupMode::shift},
        {u"flussonic", CatchupMode::flussonic},
        {u"flussonic-hls", CatchupMode::flussonic},
        {u"flussonic-ts", CatchupMode::flussonicTs},
        {u"fs", CatchupMode::flussonicTs},
        {u"xc", CatchupMode::xc},
        {u"vod", CatchupMode::vod},
    };
    const QStringView trimmed = name.trimmed();
    for (const Name &known : names) {
        if (trimmed.compare(known.text, Qt::CaseInsensitive) == 0)
            return known.mode;
    }
    return std::nullopt;
}

CatchupAttributes CatchupAttributes::read(const ExtinfAttributes &attributes)
{
    CatchupAttributes read;
    std::optional<QStringView> mode = attributes.value(u"catchup");
    if (!mode)
        mode = attributes.value(u"catchup-type");
    if (mode)
        read.mode = mode->toString();
    if (const std::optional<QStringView> source = attributes.value(u"catchup-source"))
        read.source = source->toString();
    if (const std::optional<QStringView> days = attributes.value(u"catchup-days"))
        read.days = readDays(*days);
    if (const std::optional<QStringView> hours = attributes.value(u"catchup-correction"))
        read.correctionSeconds = readCorrection(*hours);
    std::optional<QStringView> legacy = attributes.value(u"timeshift");
    if (!legacy)
        legacy = attributes.value(u"tvg-rec");
    if (legacy) {
        // "0" announces no archive.
        const std::optional<int> days = readDays(*legacy);
        if (days && *days > 0)
            read.legacyDays = days;
    }
    return read;
}

std::optional<CatchupSettings> CatchupAttributes::resolve(const CatchupAttributes &entry,
                                                          const CatchupAttributes &header)
{
    // The mode of the entry's own line comes first, its older timeshift form next, then the
    // playlist's in the same order; days the older form gives count unless catchup-days is set.
    std::optional<QString> modeName;
    std::optional<int> legacyDays;
    for (const CatchupAttributes *line : {&entry, &header}) {
        if (line->mode) {
            modeName = line->mode;
            break;
        }
        if (line->legacyDays) {
            modeName = QStringLiteral("shift");
            legacyDays = line->legacyDays;
            break;
        }
    }
    if (!modeName)
        return std::nullopt;
    const std::optional<CatchupMode> mode = CatchupSettings::modeNamed(*modeName);
    if (!mode)
        return std::nullopt;
    CatchupSettings settings;
    settings.mode = *mode;
    settings.source = entry.source ? *entry.source : header.source.value_or(QString());
    if (entry.days)
        settings.days = *entry.days;
    else if (legacyDays)
        settings.days = *legacyDays;
    else if (header.days)
        settings.days = *header.days;
    settings.correctionSeconds
        = entry.correctionSeconds.value_or(header.correctionSeconds.value_or(0));
    return settings;
}
