// How fast the playlist parser reads a large, realistic IPTV list, and what the result holds.

#include "benchreport.h"
#include "syntheticplaylist.h"

#include "sources/playlistparser.h"
#include "sources/playlisttext.h"

#include <QElapsedTimer>

#include <malloc.h>

#include <algorithm>
#include <vector>

namespace {

constexpr int entryCount = 200000;
constexpr int runs = 7;

size_t allocatedBytes()
{
    malloc_trim(0);
    return mallinfo2().uordblks;
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
    qsizetype parsed = 0;
    for (int run = 0; run < runs; ++run) {
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
        const size_t before = allocatedBytes();
        QList<PlaylistEntry> entries = PlaylistParser::parse(text, base);
        entries.squeeze();
        held = allocatedBytes() - before;
    }

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

    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json)) {
        report.note(QStringLiteral("cannot write %1").arg(json));
        return 1;
    }
    return 0;
}
