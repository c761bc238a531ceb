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
    static const ExtinfAttributes::NameSet set(names, nameCount);
    return fromValues(attributes.values(set).constData());
}

CatchupAttributes CatchupAttributes::fromValues(const std::optional<QStringView> *values)
{
    // In the order of names.
    const std::optional<QStringView> &catchup = values[0];
    const std::optional<QStringView> &catchupType = values[1];
    const std::optional<QStringView> &source = values[2];
    const std::optional<QStringView> &days = values[3];
    const std::optional<QStringView> &hours = values[4];
    const std::optional<QStringView> &timeshift = values[5];
    const std::optional<QStringView> &tvgRec = values[6];
    CatchupAttributes read;
    if (!catchup && !catchupType && !source && !days && !hours && !timeshift && !tvgRec)
        return read;
    if (const std::optional<QStringView> mode = catchup ? catchup : catchupType)
        read.mode = CatchupSettings::modeNamed(*mode);
    if (source)
        read.source = source->toString();
    if (days)
        read.days = readDays(*days);
    if (hours)
        read.correctionSeconds = readCorrection(*hours);
    if (const std::optional<QStringView> legacy = timeshift ? timeshift : tvgRec) {
        // "0" announces no archive.
        const std::optional<int> legacyDays = readDays(*legacy);
        if (legacyDays && *legacyDays > 0)
            read.legacyDays = legacyDays;
    }
    return read;
}

std::optional<CatchupSettings> CatchupAttributes::resolve(const CatchupAttributes &entry,
                                                          const CatchupAttributes &header)
{
    // The mode of the entry's own line comes first, its older timeshift form next, then the
    // playlist's in the same order; days the older form gives count unless catchup-days is set.
    std::optional<std::optional<CatchupMode>> named;
    std::optional<int> legacyDays;
    for (const CatchupAttributes *line : {&entry, &header}) {
        if (line->mode) {
            named = line->mode;
            break;
        }
        if (line->legacyDays) {
            named = CatchupMode::shift;
            legacyDays = line->legacyDays;
            break;
        }
    }
    if (!named || !*named)
        return std::nullopt;
    const std::optional<CatchupMode> mode = *named;
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
