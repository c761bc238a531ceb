// How fast the playlist parser reads a large, realistic IPTV list, and what the result holds;
// and `lumo-cli parse-m3u FILE --count` as a whole process against the JavaScript parser that
// IPTV apps such as IPTVnator use (iptv-playlist-parser, run by node), when it is installed.

#include "benchreport.h"
#include "measuredprocess.h"
#include "syntheticplaylist.h"

#include "sources/playlistparser.h"
#include "sources/playlisttext.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace {

constexpr int entryCount = 200000;
constexpr int runs = 7;

// Resident bytes once malloc has given back what it can. mallinfo2 would count only the main
// arena, while lists are parsed on two threads.
size_t residentBytes()
{
    malloc_trim(0);
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? size_t(fields[1].toULongLong()) * size_t(sysconf(_SC_PAGESIZE)) : 0;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? qQNaN() : values[values.size() / 2];
}

// One run of a counting command: its seconds and peak memory, when it counted entryCount.
std::optional<ProcessFigures> countOnce(BenchReport &report, const QString &name,
                                        const QStringList &command)
{
    const std::optional<ProcessFigures> figures = runMeasured(command);
    if (!figures || figures->exitCode != 0
        || figures->output.trimmed() != QByteArray::number(entryCount)) {
        report.note(QStringLiteral("%1 did not count the entries: %2")
                        .arg(name,
                             figures ? QString::fromUtf8(figures->output.left(200))
                                     : QStringLiteral("cannot start")));
        return std::nullopt;
    }
    return figures;
}

// The JavaScript peer, installed by `./lumo bench` with npm into .lumo/peers.
QString peerParserDirectory()
{
    const QString fromEnvironment = qEnvironmentVariable("LUMO_PARSER_PEER_DIR");
    const QString folder = fromEnvironment.isEmpty()
        ? QStringLiteral(LUMO_SOURCE_DIR "/.lumo/peers/node_modules/iptv-playlist-parser")
        : fromEnvironment;
    return QFileInfo::exists(folder + QStringLiteral("/package.json")) ? folder : QString();
}

// Both parsers as whole processes on the same file, in pairs, so that a machine busy for a
// moment slows both of a pair alike. Figures are named after prefix.
void compareWholeProcesses(BenchReport &report, const QString &prefix, const QByteArray &bytes,
                           const QString &cli)
{
    constexpr int pairs = 9;
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("list.m3u"));
    QFile file(path);
    if (!folder.isValid() || !file.open(QIODevice::WriteOnly)
        || file.write(bytes) != bytes.size()) {
        report.note(QStringLiteral("cannot write the list for the whole-process comparison"));
        return;
    }
    file.close();
    const QStringList ours {cli, QStringLiteral("parse-m3u"), path, QStringLiteral("--count")};
    const QString node = QStandardPaths::findExecutable(QStringLiteral("node"));
    const QString peer = peerParserDirectory();
    const bool withPeer = !node.isEmpty() && !peer.isEmpty();
    if (!withPeer)
        report.note(QStringLiteral("node or iptv-playlist-parser is not installed; the "
                                   "comparison with it is left out"));
    const QString script = QStringLiteral(
        "const p = require(process.argv[2]); const fs = require('fs');"
        "console.log(p.parse(fs.readFileSync(process.argv[1], 'utf8')).items.length);");
    const QStringList theirs {node, QStringLiteral("-e"), script, path, peer};
    std::vector<double> ourSeconds, ourMegabytes, theirSeconds, theirMegabytes, ratios;
    for (int pair = 0; pair < pairs; ++pair) {
        // Each goes first in every other pair: a process that follows another may find the
        // machine's memory or caches in a state the first left them in.
        const bool oursFirst = pair % 2 == 0 || !withPeer;
        std::optional<ProcessFigures> mine, other;
        for (const bool runOurs : {oursFirst, !oursFirst}) {
            if (!runOurs && !withPeer)
                continue;
            std::optional<ProcessFigures> &figures = runOurs ? mine : other;
            figures = countOnce(report,
                                prefix + (runOurs ? QStringLiteral("cli") : QStringLiteral("peer")),
                                runOurs ? ours : theirs);
            if (!figures)
                return;
        }
        ourSeconds.push_back(mine->seconds);
        ourMegabytes.push_back(mine->peakResidentMegabytes);
        if (!withPeer)
            continue;
        theirSeconds.push_back(other->seconds);
        theirMegabytes.push_back(other->peakResidentMegabytes);
        ratios.push_back(other->seconds / mine->seconds);
    }
    report.add(prefix + QStringLiteral("cli_count_s"), median(ourSeconds), QStringLiteral("s"));
    report.add(prefix + QStringLiteral("cli_peak_rss_mb"), median(ourMegabytes),
               QStringLiteral("MB"));
    if (!withPeer)
        return;
    report.add(prefix + QStringLiteral("peer_count_s"), median(theirSeconds), QStringLiteral("s"));
    report.add(prefix + QStringLiteral("peer_peak_rss_mb"), median(theirMegabytes),
               QStringLiteral("MB"));
    report.add(prefix + QStringLiteral("cli_times_faster_than_peer"), median(ratios),
               QStringLiteral("x"));
    report.note(
        QStringLiteral("%1: whole processes on the same %2 MB file, %4 pairs, each going "
                       "first in every other pair, median of the pairs' ratios; the peer is "
                       "iptv-playlist-parser run by %3")
            .arg(prefix.isEmpty() ? QStringLiteral("the bench's list")
                                  : QStringLiteral("the provider-shaped list"))
            .arg(double(bytes.size()) / (1024.0 * 1024.0), 0, 'f', 1)
            .arg(node)
            .arg(pairs));
}

} // namespace

int main(int argc, char *argv[])
{
    BenchReport report(QStringLiteral("parser"));
    const QUrl base(QStringLiteral("http://provider.example.com/get.php?type=m3u_plus"));
    const QByteArray bytes = makeSyntheticPlaylist(entryCount);
    const double megabytes = double(bytes.size()) / (1024.0 * 1024.0);
    report.note(QStringLiteral("%1 entries, %2 MB of UTF-8, best of %3 runs")
                    .arg(entryCount)
                    .arg(megabytes, 0, 'f', 1)
                    .arg(runs));

    std::vector<double> decodeMs;
    std::vector<double> parseMs;
    std::vector<double> bytesParseMs;
    qsizetype parsed = 0;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer bytesTimer;
        bytesTimer.start();
        const qsizetype fromBytes = PlaylistParser::parse(QByteArrayView(bytes), base).size();
        bytesParseMs.push_back(double(bytesTimer.nsecsElapsed()) / 1e6);
        if (fromBytes != entryCount) {
            report.note(QStringLiteral("parsed %1 entries from the bytes, expected %2")
                            .arg(fromBytes)
                            .arg(entryCount));
            return 1;
        }
        QElapsedTimer timer;
        timer.start();
        const QString text = decodePlaylistText(bytes);
        decodeMs.push_back(double(timer.nsecsElapsed()) / 1e6);
        timer.restart();
        const QList<PlaylistEntry> entries = PlaylistParser::parse(text, base);
        parseMs.push_back(double(timer.nsecsElapsed()) / 1e6);
        parsed = entries.size();
    }
    if (parsed != entryCount) {
        report.note(QStringLiteral("parsed %1 entries, expected %2").arg(parsed).arg(entryCount));
        return 1;
    }
    const double bestParse = *std::min_element(parseMs.begin(), parseMs.end());
    const double bestDecode = *std::min_element(decodeMs.begin(), decodeMs.end());

    size_t held = 0;
    {
        const QString text = decodePlaylistText(bytes);
        const size_t before = residentBytes();
        QList<PlaylistEntry> entries = PlaylistParser::parse(text, base);
        entries.squeeze();
        held = residentBytes() - before;
    }

    report.add(QStringLiteral("parse_from_bytes_ms"),
               *std::min_element(bytesParseMs.begin(), bytesParseMs.end()), QStringLiteral("ms"));
    report.add(QStringLiteral("decode_ms"), bestDecode, QStringLiteral("ms"));
    report.add(QStringLiteral("parse_ms"), bestParse, QStringLiteral("ms"));
    report.add(QStringLiteral("decode_and_parse_ms"), bestDecode + bestParse, QStringLiteral("ms"));
    report.add(QStringLiteral("entries_per_second"), entryCount / (bestParse / 1000.0),
               QStringLiteral("entries/s"));
    report.add(QStringLiteral("megabytes_per_second"), megabytes / (bestParse / 1000.0),
               QStringLiteral("MB/s"));
    report.add(QStringLiteral("bytes_per_entry"), double(held) / entryCount,
               QStringLiteral("bytes"));
    report.add(QStringLiteral("entries_megabytes"), double(held) / (1024.0 * 1024.0),
               QStringLiteral("MB"));

    const QString cli
        = QFileInfo(QString::fromLocal8Bit(argv[0])).dir().filePath(QStringLiteral("lumo-cli"));
    compareWholeProcesses(report, QString(), bytes, cli);
    // A second list, shaped as provider lists with catch-up are.
    compareWholeProcesses(report, QStringLiteral("provider_"),
                          makeProviderShapedPlaylist(entryCount), cli);
    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json)) {
        report.note(QStringLiteral("cannot write %1").arg(json));
        return 1;
    }
    return 0;
}
