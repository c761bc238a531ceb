#pragma once
// How a provider offers a channel's past programmes, as its playlist announces it: the way the
// archive address is made (the mode), the address pattern, how many days back the archive
// reaches and how far the server's clock is off the guide's.
#include <QString>
#include <QStringView>
#include <QtGlobal>
#include <iterator>
#include <optional>

class ExtinfAttributes;

enum class CatchupMode {
    standard, // "default": the source is the whole address
    append, // the source follows the channel's address
    shift, // "?utc=…&lutc=…" follows the channel's address
    flussonic, // Flussonic's HLS form
    flussonicTs, // Flussonic's MPEG-TS form
    xc, // Xtream Codes' timeshift path
    vod, // the source names the programme's own catch-up id
};

struct CatchupSettings
{
    static constexpr int defaultDays = 5;
    // The archive window never reaches further back than this, whatever a list says.
    static constexpr int maxDays = 14;

    CatchupMode mode = CatchupMode::standard;
    QString source; // null when the list gives none
    int days = defaultDays;
    qint32 correctionSeconds = 0; // added to a programme's start to reach the server's time

    // The mode a name stands for, compared case-insensitively; nothing for names not known.
    static std::optional<CatchupMode> modeNamed(QStringView name);
    // The days back the archive window reaches: never more than maxDays.
    int windowDays() const { return qBound(0, days, maxDays); }
    // The archive holds a programme that began inside the window and has begun by now; one
    // that began before the window is gone, if only in part.
    bool archives(qint64 start, qint64 now) const
    {
        return start <= now && start >= now - qint64(windowDays()) * 86400;
    }

    friend bool operator==(const CatchupSettings &, const CatchupSettings &) = default;
};

// The catch-up attributes written on one #EXTM3U or #EXTINF line; nothing for those absent or
// unreadable.
struct CatchupAttributes
{
    // catchup, else catchup-type, as CatchupSettings::modeNamed reads it: outer nothing when
    // the line names no mode, inner nothing when the mode it names is not known.
    std::optional<std::optional<CatchupMode>> mode;
    std::optional<QString> source;
    std::optional<int> days;
    std::optional<qint32> correctionSeconds;
    std::optional<int> legacyDays; // timeshift="N" or tvg-rec="N": mode shift, N days

    static CatchupAttributes read(const ExtinfAttributes &attributes);
    // The names read, in the order fromValues() takes their values.
    static constexpr QStringView names[]
        = {u"catchup",   u"catchup-type", u"catchup-source", u"catchup-days", u"catchup-correction",
           u"timeshift", u"tvg-rec"};
    static constexpr qsizetype nameCount = std::size(names);
    static CatchupAttributes fromValues(const std::optional<QStringView> *values);
    bool isEmpty() const { return !mode && !source && !days && !correctionSeconds && !legacyDays; }

    // An entry's settings: each attribute of its own line, else the playlist's (header).
    // Nothing when neither names a mode, or the mode is not known: that entry has no archive.
    static std::optional<CatchupSettings> resolve(const CatchupAttributes &entry,
                                                  const CatchupAttributes &header);

    friend bool operator==(const CatchupAttributes &, const CatchupAttributes &) = default;
};
