#include "catchupcommand.h"

#include "sources/catchupaddress.h"
#include "sources/playlisterror.h"
#include "sources/playlistheader.h"
#include "sources/playlistparser.h"

#include "commandinput.h"

#include <QHash>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr const char *usage
    = "usage: lumo-cli catchup PLAYLIST --channel N --start ISO8601 --stop ISO8601 "
      "--now ISO8601 [--catchup-id ID] [--base ADDRESS]\n"
      "  N counts the playlist's channels from 1; moments take their zone, such as "
      "2026-11-25T20:00:00Z\n";

} // namespace

int runCatchupCommand(const QStringList &arguments)
{
    QString playlistPath;
    QHash<QString, QString> options;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (argument.startsWith(u"--")) {
            if (i + 1 >= arguments.size()) {
                std::fputs(usage, stderr);
                return 2;
            }
            options.insert(argument, arguments[++i]);
        } else if (playlistPath.isEmpty()) {
            playlistPath = argument;
        } else {
            std::fputs(usage, stderr);
            return 2;
        }
    }
    static const QStringList known {u"--channel"_s, u"--start"_s,      u"--stop"_s,
                                    u"--now"_s,     u"--catchup-id"_s, u"--base"_s};
    for (auto it = options.cbegin(); it != options.cend(); ++it) {
        if (!known.contains(it.key())) {
            std::fputs(usage, stderr);
            return 2;
        }
    }
    if (playlistPath.isEmpty() || !options.contains(u"--channel"_s)
        || !options.contains(u"--start"_s) || !options.contains(u"--stop"_s)
        || !options.contains(u"--now"_s)) {
        std::fputs(usage, stderr);
        return 2;
    }
    bool numbered = false;
    const qsizetype channel = options.value(u"--channel"_s).toLongLong(&numbered);
    if (!numbered || channel < 1) {
        writeErr(QStringLiteral("lumo-cli: --channel counts from 1: %1")
                     .arg(options.value(u"--channel"_s)));
        return 2;
    }
    std::optional<qint64> moments[3];
    const QString names[3] = {u"--start"_s, u"--stop"_s, u"--now"_s};
    for (int i = 0; i < 3; ++i) {
        moments[i] = momentWithZone(options.value(names[i]));
        if (!moments[i]) {
            writeErr(QStringLiteral("lumo-cli: %1 needs a moment with its zone (Z or ±HH:MM): %2")
                         .arg(names[i], options.value(names[i])));
            return 2;
        }
    }

    int status = 0;
    std::optional<QString> base;
    if (options.contains(u"--base"_s))
        base = options.value(u"--base"_s);
    const std::optional<PlaylistInput> input = readPlaylistInput(playlistPath, base, status);
    if (!input)
        return status;
    const QList<PlaylistEntry> entries
        = PlaylistParser::parse(QByteArrayView(input->bytes), input->baseURL);
    if (entries.isEmpty()) {
        writeErr(playlistErrorDescription(PlaylistError::empty));
        return 1;
    }
    if (channel > entries.size()) {
        writeErr(QStringLiteral("lumo-cli: the playlist has %1 channels").arg(entries.size()));
        return 2;
    }
    const PlaylistEntry &entry = entries[channel - 1];
    const PlaylistHeader header = PlaylistHeader::read(input->bytes, input->baseURL);
    const qint32 shift = entry.tvgShiftSeconds().value_or(header.shiftSeconds.value_or(0));
    std::optional<QUrl> archive;
    if (entry.catchup()) {
        archive = CatchupAddress::of(*entry.catchup(), entry.url(),
                                     {*moments[0], *moments[1], options.value(u"--catchup-id"_s)},
                                     *moments[2], shift);
    }
    if (!archive) {
        writeErr(QStringLiteral("This channel has no archive."));
        return 1;
    }
    std::printf("%s\n", archive->toString(QUrl::FullyEncoded).toUtf8().constData());
    return 0;
}
