// Catch-up on the local server: from a click on a past programme in the channel's programme
// list to the first frame of that programme, and from a seek inside a source that is loaded
// again for the new moment to the first frame of that moment. The archive's clips are made
// before the clock starts, as a provider has them ready.

#include "benchreport.h"

#include "httpserver/catchuparchive.h"
#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "sources/catchupaddress.h"
#include "surface/mpvframegrabber.h"
#include "testmedia.h"
#include "ui/channellist.h"
#include "ui/channellistmodel.h"
#include "ui/programmelist.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QListWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <algorithm>
#include <vector>

namespace {

constexpr qint64 programmeSeconds = 120;
constexpr int runs = 5;

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? qQNaN() : values[values.size() / 2];
}

QString xmltvTime(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc())
               .toString(QStringLiteral("yyyyMMddHHmmss"))
        + QStringLiteral(" +0000");
}

QString title(qint64 start)
{
    return QStringLiteral("Show %1").arg(start);
}

// Milliseconds until the picture shows a moment within seconds after from; -1 past the wait.
double msUntilShown(MpvFrameGrabber &grabber, const QElapsedTimer &clock, qint64 from)
{
    while (clock.elapsed() < 20000) {
        const std::optional<qint64> shown = CatchupArchive::momentShown(grabber.grab());
        if (shown && *shown >= from && *shown <= from + 3)
            return double(clock.nsecsElapsed()) / 1e6;
        QTest::qWait(5);
    }
    return -1;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    BenchReport report(QStringLiteral("catchup"));
    QTemporaryDir dir;
    const QDir www(dir.filePath(QStringLiteral("www")));
    QDir().mkpath(www.filePath(QStringLiteral("news")));
    if (!dir.isValid()
        || !TestMedia::makeTransportStream(www.filePath(QStringLiteral("news/mpegts")), 30)) {
        report.note(QStringLiteral("ffmpeg could not make the live channel"));
        return 1;
    }
    LocalHttpServer server;
    if (!server.listen())
        return 1;
    server.serveDirectory(www.path());
    CatchupArchive archive(dir.filePath(QStringLiteral("clips")));
    archive.serveOn(server);

    const qint64 now = QDateTime::currentSecsSinceEpoch();
    const qint64 firstStart = now - now % 60 - 40 * 60;
    QByteArray guide = "<tv><channel id=\"news\"><display-name>News</display-name></channel>";
    std::vector<qint64> starts;
    for (qint64 start = firstStart; start < now + 20 * 60; start += programmeSeconds) {
        guide += "<programme channel=\"news\" start=\"" + xmltvTime(start).toLatin1() + "\" stop=\""
            + xmltvTime(start + programmeSeconds).toLatin1() + "\"><title>" + title(start).toUtf8()
            + "</title></programme>";
        if (start + programmeSeconds < now)
            starts.push_back(start);
    }
    guide += "</tv>";
    server.route(QStringLiteral("/guide.xml"), HttpResponse::text(guide, "application/xml"));
    const QByteArray playlist = "#EXTM3U url-tvg=\""
        + server.url(QStringLiteral("/guide.xml")).toEncoded()
        + "\"\n#EXTINF:-1 tvg-id=\"news\" catchup=\"flussonic\",News\n"
        + server.url(QStringLiteral("/news/mpegts")).toEncoded() + "\n";
    server.route(QStringLiteral("/tv.m3u"), HttpResponse::text(playlist, "audio/x-mpegurl"));

    // The clips of the programmes asked for, and of the moments sought to, made beforehand.
    std::vector<qint64> asked(starts.end() - runs, starts.end());
    for (const qint64 start : asked) {
        for (const qint64 moment : {start, start + 60}) {
            HttpRequest request;
            request.path = QStringLiteral("/news/timeshift_abs-%1.ts").arg(moment);
            archive.answer(request);
        }
    }

    PlayerModel model(std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
    MpvFrameGrabber grabber(static_cast<MpvPlayer &>(model.player()).handle());
    ChannelList list(model);
    list.resize(260, 700);
    list.show();
    model.openRemote(server.url(QStringLiteral("/tv.m3u")).toString(), std::nullopt);
    if (!QTest::qWaitFor(
            [&] {
                return list.listModel()->rowCount() == 1 && !model.programmeGuide()->isEmpty()
                    && !model.isLoadingGuides();
            },
            20000)) {
        report.note(QStringLiteral("the playlist or its guide did not load"));
        return 1;
    }

    std::vector<double> firstFrameMs;
    std::vector<double> seekMs;
    for (const qint64 start : asked) {
        list.closeProgrammes();
        list.openProgrammes(0);
        QListWidget *view = list.programmeList()->listView();
        QListWidgetItem *item = nullptr;
        for (int i = 0; i < view->count() && !item; ++i) {
            if (view->item(i)->text().contains(title(start)))
                item = view->item(i);
        }
        if (!item) {
            report.note(QStringLiteral("no row for the programme at %1").arg(start));
            return 1;
        }
        view->scrollToItem(item);
        QElapsedTimer clock;
        clock.start();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                          view->visualItemRect(item).center());
        const double shown = msUntilShown(grabber, clock, start);
        if (shown < 0) {
            report.note(QStringLiteral("the programme at %1 did not show").arg(start));
            return 1;
        }
        firstFrameMs.push_back(shown);
        QTest::qWait(300);
        clock.restart();
        model.seek(60);
        const double sought = msUntilShown(grabber, clock, start + 60);
        if (sought < 0) {
            report.note(QStringLiteral("the seek in the programme at %1 did not show").arg(start));
            return 1;
        }
        seekMs.push_back(sought);
    }
    report.note(QStringLiteral("Flussonic archive (timeshift_abs-UTC.ts) on the local server, %1 "
                               "programmes; the seek loads the source again at the new moment")
                    .arg(runs));
    report.add(QStringLiteral("click_to_first_frame_median_ms"), median(firstFrameMs),
               QStringLiteral("ms"));
    report.add(QStringLiteral("click_to_first_frame_worst_ms"),
               *std::max_element(firstFrameMs.begin(), firstFrameMs.end()), QStringLiteral("ms"));
    report.add(QStringLiteral("seek_to_first_frame_median_ms"), median(seekMs),
               QStringLiteral("ms"));
    report.add(QStringLiteral("seek_to_first_frame_worst_ms"),
               *std::max_element(seekMs.begin(), seekMs.end()), QStringLiteral("ms"));
    grabber.stop();
    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json)) {
        report.note(QStringLiteral("cannot write %1").arg(json));
        return 1;
    }
    return 0;
}
