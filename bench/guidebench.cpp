// Programme guides: `lumo-cli guide` as a whole process on a 1,000-channel, 7-day guide (plain
// and gzipped) side by side with libxml2 reading it and building nothing (xmllint --stream, the
// floor) and with the JavaScript parser IPTV apps use (@iptv/xmltv, run by node); a 1 GB guide
// read for a 1,000-entry playlist; and the window's longest main-thread stall while a guide
// loads. Pass --quick to leave out the 1 GB guide.

#include "benchreport.h"
#include "eventloopwait.h"
#include "mainthreadprobe.h"
#include "measuredprocess.h"
#include "syntheticguide.h"

#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "ui/contentview.h"
#include "ui/playerwindow.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimeZone>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int runs = 5;

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? qQNaN() : values[values.size() / 2];
}

struct Measured
{
    double seconds = 0;
    double megabytes = 0;
};

// The median time and peak memory of runs of a command whose output check accepts.
template<typename Check>
std::optional<Measured> measure(BenchReport &report, const QString &name,
                                const QStringList &command, Check check, int times = runs)
{
    std::vector<double> seconds;
    std::vector<double> megabytes;
    for (int run = 0; run < times; ++run) {
        const std::optional<ProcessFigures> figures = runMeasured(command);
        if (!figures || figures->exitCode != 0 || !check(figures->output)) {
            report.note(QStringLiteral("%1 failed: %2")
                            .arg(name,
                                 figures ? QString::fromUtf8(figures->output.left(300))
                                         : QStringLiteral("cannot start")));
            return std::nullopt;
        }
        seconds.push_back(figures->seconds);
        megabytes.push_back(figures->peakResidentMegabytes);
    }
    const Measured result {median(seconds), median(megabytes)};
    report.add(name + QStringLiteral("_s"), result.seconds, QStringLiteral("s"));
    report.add(name + QStringLiteral("_peak_rss_mb"), result.megabytes, QStringLiteral("MB"));
    return result;
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Every entry has a programme on now.
auto everyEntryHasNow(int entries)
{
    return [entries](const QByteArray &output) {
        return output.count('\n') == entries && output.count("\"now\":{") == entries;
    };
}

QString peerDirectory()
{
    const QString folder = QStringLiteral(LUMO_SOURCE_DIR "/.lumo/peers/node_modules/@iptv/xmltv");
    return QFileInfo::exists(folder + QStringLiteral("/package.json")) ? folder : QString();
}

// The longest stall of the window's main thread from importing the playlist until its guide is
// shown.
void measureWindow(BenchReport &report, const QString &playlist)
{
    PlayerModel model(std::make_unique<ScriptedMediaPlayer>());
    model.setFileChooser([playlist](const OpenPanelRequest &) { return std::optional(playlist); });
    PlayerWindow window(model);
    window.resize(1000, 720);
    window.show();
    window.contentView()->setShowSidebar(true);
    waitUntil([] { return false; }, 500); // shown and settled
    // The playlist first, then its guide: the stall is measured from the playlist's publication
    // on, while the guide is read and shown.
    bool published = false;
    QObject::connect(&model, &PlayerModel::playlistChanged, [&] { published = true; });
    model.importLocalM3U(std::nullopt);
    if (!waitUntil([&] { return published; }, 60000)) {
        report.note(QStringLiteral("the window did not load the playlist"));
        return;
    }
    MainThreadProbe probe;
    QElapsedTimer clock;
    clock.start();
    probe.start();
    const bool loaded = waitUntil(
        [&] { return !model.programmeGuide()->isEmpty() && !model.isLoadingGuides(); }, 120000);
    // What the rows draw with the guide is part of it.
    waitUntil([] { return false; }, 200);
    probe.stop();
    if (!loaded) {
        report.note(QStringLiteral("the window did not load the guide"));
        return;
    }
    report.add(QStringLiteral("window_guide_loaded_s"), double(clock.nsecsElapsed()) / 1e9,
               QStringLiteral("s"));
    report.add(QStringLiteral("window_longest_stall_ms"), probe.longestGapMs(),
               QStringLiteral("ms"));
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    BenchReport report(QStringLiteral("guide"));
    const bool quick = application.arguments().contains(QStringLiteral("--quick"));
    QTemporaryDir dir(QDir::temp().filePath(QStringLiteral("lumo-bench-guide-XXXXXX")));
    const QString cli
        = QFileInfo(QString::fromLocal8Bit(argv[0])).dir().filePath(QStringLiteral("lumo-cli"));

    // Yesterday's midnight: the seven days hold the present for the window.
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    SyntheticGuide guide;
    guide.firstDay = now - now % 86400 - 86400;
    const QString at
        = QDateTime::fromSecsSinceEpoch(guide.firstDay + 2 * 86400 + 20 * 3600, QTimeZone::utc())
              .toString(Qt::ISODate);
    const QString plain = dir.filePath(QStringLiteral("guide.xml"));
    qint64 programmes = 0;
    if (!dir.isValid() || !writeSyntheticGuide(plain, guide, &programmes)) {
        report.note(QStringLiteral("cannot write the guide"));
        return 1;
    }
    QProcess gzip;
    gzip.start(QStringLiteral("gzip"), {QStringLiteral("-k"), QStringLiteral("-6"), plain});
    if (!gzip.waitForFinished(300000) || gzip.exitCode() != 0) {
        report.note(QStringLiteral("cannot gzip the guide"));
        return 1;
    }
    const QString packed = plain + QStringLiteral(".gz");
    const QString list = dir.filePath(QStringLiteral("list.m3u"));
    const QString packedList = dir.filePath(QStringLiteral("list-gz.m3u"));
    if (!writeFile(list, syntheticGuidePlaylist(guide.channels, 1, QStringLiteral("guide.xml")))
        || !writeFile(packedList,
                      syntheticGuidePlaylist(guide.channels, 1, QStringLiteral("guide.xml.gz")))) {
        report.note(QStringLiteral("cannot write the playlists"));
        return 1;
    }
    report.note(QStringLiteral("%1 channels x %2 days: %3 programmes, %4 MB plain, %5 MB gzip; "
                               "whole processes, median of %6 runs")
                    .arg(guide.channels)
                    .arg(guide.days)
                    .arg(programmes)
                    .arg(double(QFileInfo(plain).size()) / 1048576.0, 0, 'f', 1)
                    .arg(double(QFileInfo(packed).size()) / 1048576.0, 0, 'f', 1)
                    .arg(runs));

    const auto ours = measure(report, QStringLiteral("cli_guide"),
                              {cli, QStringLiteral("guide"), list, QStringLiteral("--at"), at},
                              everyEntryHasNow(guide.channels));
    const auto oursPacked
        = measure(report, QStringLiteral("cli_guide_gz"),
                  {cli, QStringLiteral("guide"), packedList, QStringLiteral("--at"), at},
                  everyEntryHasNow(guide.channels));
    const QString xmllint = QStandardPaths::findExecutable(QStringLiteral("xmllint"));
    std::optional<Measured> floor;
    if (xmllint.isEmpty()) {
        report.note(QStringLiteral("xmllint is not installed; the floor is left out"));
    } else {
        floor = measure(report, QStringLiteral("xmllint_stream"),
                        {xmllint, QStringLiteral("--stream"), QStringLiteral("--noout"), plain},
                        [](const QByteArray &) { return true; });
    }
    const QString node = QStandardPaths::findExecutable(QStringLiteral("node"));
    const QString peer = peerDirectory();
    std::optional<Measured> theirs;
    if (node.isEmpty() || peer.isEmpty()) {
        report.note(QStringLiteral("node or @iptv/xmltv is not installed; the comparison with "
                                   "it is left out"));
    } else {
        const QString script
            = QStringLiteral("const x = require(process.argv[2]); const fs = require('fs');"
                             "console.log(x.parseXmltv(fs.readFileSync(process.argv[1], "
                             "'utf8')).programmes.length);");
        theirs = measure(report, QStringLiteral("peer_xmltv"),
                         {node, QStringLiteral("-e"), script, plain, peer},
                         [programmes](const QByteArray &output) {
                             return output.trimmed() == QByteArray::number(programmes);
                         });
    }
    if (ours && theirs)
        report.add(QStringLiteral("cli_times_faster_than_peer"), theirs->seconds / ours->seconds,
                   QStringLiteral("x"));
    if (ours && floor)
        report.add(QStringLiteral("cli_over_xmllint"), ours->seconds / floor->seconds,
                   QStringLiteral("x"));
    if (ours && oursPacked)
        report.add(QStringLiteral("gz_over_plain"), oursPacked->seconds / ours->seconds,
                   QStringLiteral("x"));

    measureWindow(report, list);

    if (!quick) {
        SyntheticGuide big;
        big.channels = 9000;
        big.days = 14;
        big.firstDay = guide.firstDay;
        big.descriptions = false;
        const QString bigPath = dir.filePath(QStringLiteral("big.xml"));
        const QString bigList = dir.filePath(QStringLiteral("big.m3u"));
        qint64 bigProgrammes = 0;
        if (!writeSyntheticGuide(bigPath, big, &bigProgrammes)
            || !writeFile(bigList,
                          syntheticGuidePlaylist(big.channels, 9, QStringLiteral("big.xml")))) {
            report.note(QStringLiteral("cannot write the 1 GB guide"));
            return 1;
        }
        report.note(QStringLiteral("big guide: %1 channels x %2 days, %3 programmes, %4 MB; "
                                   "1,000 of its channels in the playlist; one run")
                        .arg(big.channels)
                        .arg(big.days)
                        .arg(bigProgrammes)
                        .arg(double(QFileInfo(bigPath).size()) / 1048576.0, 0, 'f', 0));
        measure(report, QStringLiteral("cli_guide_1gb"),
                {cli, QStringLiteral("guide"), bigList, QStringLiteral("--at"), at},
                everyEntryHasNow(1000), 1);
        // The same channels with a 14-day archive, at the guide's last evening: every programme
        // before it is kept.
        const QString archiveList = dir.filePath(QStringLiteral("archive.m3u"));
        const QString lastEvening
            = QDateTime::fromSecsSinceEpoch(big.firstDay + 13 * 86400 + 20 * 3600, QTimeZone::utc())
                  .toString(Qt::ISODate);
        if (writeFile(archiveList,
                      syntheticGuidePlaylist(big.channels, 9, u"big.xml"_s,
                                             "catchup=\"shift\" catchup-days=\"14\""))) {
            report.note(QStringLiteral("the same with catch-up for 14 days on every channel, at %1")
                            .arg(lastEvening));
            measure(
                report, QStringLiteral("cli_guide_1gb_catchup"),
                {cli, QStringLiteral("guide"), archiveList, QStringLiteral("--at"), lastEvening},
                everyEntryHasNow(1000), 1);
        }
        QFile::remove(bigPath);
    }

    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json)) {
        report.note(QStringLiteral("cannot write %1").arg(json));
        return 1;
    }
    return 0;
}
