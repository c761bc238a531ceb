// How fast the playlist parser reads a large, realistic IPTV list, and what the result holds.

#include "benchreport.h"

#include "sources/playlistparser.h"
#include "sources/playlisttext.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <malloc.h>

#include <algorithm>
#include <vector>

namespace {

constexpr int entryCount = 200000;
constexpr int runs = 7;

const char *const groups[]
    = {"News",          "Sports",  "Movies",   "Kids", "Music",   "Documentary",
       "Entertainment", "Религия", "Ειδήσεις", "综合", "Général", "Cine"};
const char *const countries[]
    = {"us", "gb", "de", "fr", "es", "it", "ru", "cn", "br", "in", "us;ca", "jp"};
const char *const names[]
    = {"Channel %1 HD", "Télé %1 (720p)", "Канал %1", "新闻 %1", "Ελληνικό %1 [Geo-blocked]",
       "Sport %1 +1",   "Cinéma %1 4K"};

// A playlist shaped like the big provider lists: tokenised addresses, logos, groups,
// countries, a few relative addresses and option directives.
QByteArray makePlaylist(int count)
{
    QRandomGenerator random(20261121);
    QString text = QStringLiteral("#EXTM3U x-tvg-url=\"http://epg.example.net/guide.xml.gz\"\r\n");
    text.reserve(qsizetype(count) * 330);
    for (int i = 0; i < count; ++i) {
        const QString name = QString::fromUtf8(names[i % std::size(names)]).arg(i);
        const QString country
            = QString::fromLatin1(countries[random.bounded(int(std::size(countries)))]);
        const QString group = QString::fromUtf8(groups[random.bounded(int(std::size(groups)))]);
        const QString token
            = QString::number(random.generate64(), 36) + QString::number(random.generate64(), 36);
        text += QStringLiteral("#EXTINF:-1 tvg-id=\"Channel%1.%2@SD\" tvg-name=\"%3\" "
                               "tvg-logo=\"https://logos.example.com/images/channels/%1/logo.png\" "
                               "tvg-country=\"%4\" group-title=\"%5\",%3\r\n")
                    .arg(i)
                    .arg(country.left(2), name, country, group);
        if (i % 10 == 0)
            text
                += QStringLiteral("#EXTVLCOPT:http-user-agent=Mozilla/5.0 (X11; Linux x86_64)\r\n");
        if (i % 25 == 0) {
            text += QStringLiteral("streams/%1/index.m3u8\r\n").arg(i);
        } else {
            text += QStringLiteral("http://line.provider-%1.example.com:8080/live/user%2/%3/%4.ts"
                                   "?token=%5&expires=1767225600\r\n")
                        .arg(i % 17)
                        .arg(i % 1000)
                        .arg(token.left(12))
                        .arg(i)
                        .arg(token);
        }
    }
    return text.toUtf8();
}

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
    const QByteArray bytes = makePlaylist(entryCount);
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
