// How the player window copes with a huge IPTV playlist: the time from the model publishing
// 200,000 channels to the list drawn on screen, and the main thread's time per keystroke in the
// channel search and per page scrolled, until the list is drawn; the list alone also with a
// programme guide for every channel, whose rows show what is on now.

#include "benchreport.h"
#include "eventloopwait.h"
#include "syntheticplaylist.h"

#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "sources/playlistparser.h"
#include "ui/channellist.h"
#include "ui/channellistmodel.h"
#include "ui/contentview.h"
#include "ui/playerwindow.h"

#include <QApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListView>
#include <QScrollBar>
#include <QSet>
#include <QTest>
#include <QTimeZone>

#include <algorithm>
#include <vector>

namespace {

constexpr int entryCount = 200000;
constexpr int publishRuns = 3;
const QString searchText = QStringLiteral("sport 12");

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

struct Figures
{
    std::vector<double> shownMs;
    std::vector<double> keystrokeMs;
    std::vector<double> scrollMs;
};

// The playlist with the given guide address in its header, or none.
QByteArray playlistWithGuide(QByteArray playlist, const QByteArray &guideAddress)
{
    const QByteArray named = "#EXTM3U x-tvg-url=\"http://epg.example.net/guide.xml.gz\"";
    const QByteArray header = guideAddress.isEmpty() ? QByteArray("#EXTM3U")
                                                     : "#EXTM3U x-tvg-url=\"" + guideAddress + "\"";
    return playlist.replace(0, named.size(), header);
}

QByteArray xmltvTime(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc())
               .toString(QStringLiteral("yyyyMMddHHmmss"))
               .toLatin1()
        + " +0000";
}

// A guide for every channel of the playlist: three programmes each, the first on now.
QByteArray guideFor(const QByteArray &playlist)
{
    const QList<PlaylistEntry> entries = PlaylistParser::parse(
        QByteArrayView(playlist), QUrl(QStringLiteral("http://bench.example/list.m3u")));
    QSet<QString> ids;
    for (const PlaylistEntry &entry : entries) {
        if (!entry.tvgId().isEmpty())
            ids.insert(entry.tvgId().toString());
    }
    const qint64 hour = QDateTime::currentSecsSinceEpoch() / 3600 * 3600;
    QByteArray guide = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tv>\n";
    for (const QString &id : ids) {
        guide += "<channel id=\"" + id.toHtmlEscaped().toUtf8() + "\"><display-name>"
            + id.toHtmlEscaped().toUtf8() + "</display-name></channel>\n";
    }
    for (const QString &id : ids) {
        for (int show = 0; show < 3; ++show) {
            guide += "<programme start=\"" + xmltvTime(hour + 3600 * (show - 1)) + "\" stop=\""
                + xmltvTime(hour + 3600 * show) + "\" channel=\"" + id.toHtmlEscaped().toUtf8()
                + "\"><title>Evening programme " + QByteArray::number(show)
                + "</title></programme>\n";
        }
    }
    return guide + "</tv>\n";
}

// Publishes the playlist a few times and types into the search, each time until top, which
// holds channels, has drawn the result.
bool measure(PlayerModel &model, const QUrl &address, const QElapsedTimer &sincePublished,
             QWidget &top, ChannelList &channels, Figures &figures, bool withGuide = false)
{
    double shownMs = -1;
    // Runs after the list's own reaction to the playlist.
    const QMetaObject::Connection shown
        = QObject::connect(&model, &PlayerModel::playlistChanged, &top, [&] {
              if (model.playlist().isEmpty())
                  return;
              top.repaint();
              shownMs = double(sincePublished.nsecsElapsed()) / 1e6;
          });
    for (int run = 0; run < publishRuns; ++run) {
        model.clearNetworkStream();
        shownMs = -1;
        model.openRemote(address.toString(), std::nullopt);
        if (!waitUntil([&] { return shownMs >= 0; }, 120000)
            || model.playlist().size() != entryCount)
            return false;
        figures.shownMs.push_back(shownMs);
    }
    QObject::disconnect(shown);
    if (withGuide
        && !waitUntil([&] { return model.programmeGuide() && !model.isLoadingGuides(); }, 120000))
        return false;

    QLineEdit *search = channels.searchField();
    QListView *list = channels.listView();
    const auto type = [&](Qt::Key key, char text) {
        QElapsedTimer timer;
        timer.start();
        if (text)
            QTest::keyClick(search, text);
        else
            QTest::keyClick(search, key);
        list->viewport()->repaint();
        figures.keystrokeMs.push_back(double(timer.nsecsElapsed()) / 1e6);
    };
    const auto typeQuery = [&] {
        for (QChar c : searchText)
            type(Qt::Key_unknown, c.toLatin1());
        for (int i = 0; i < searchText.size(); ++i)
            type(Qt::Key_Backspace, 0);
    };
    search->setFocus();
    typeQuery();
    channels.setCountryCode(QStringLiteral("DE"));
    typeQuery();
    channels.setCountryCode(std::nullopt);

    // Scrolled a page at a time, as the wheel or the scroll bar does; timed with the list in a
    // window of its own, since in the player window drawing is composed later through OpenGL.
    if (&top != &channels)
        return true;
    QScrollBar *bar = list->verticalScrollBar();
    for (int page = 0; page < 40; ++page) {
        QElapsedTimer timer;
        timer.start();
        bar->setValue(bar->value() + bar->pageStep());
        list->viewport()->repaint();
        figures.scrollMs.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    // The pages were turned, with the programme on now in the rows when there is a guide.
    if (!list->viewport()->isVisible() || bar->value() != 40 * bar->pageStep())
        return false;
    const QModelIndex first = list->model()->index(0, 0);
    return !withGuide || !first.data(ChannelListModel::ProgrammeRole).toString().isEmpty();
}

void addFigures(BenchReport &report, const QString &prefix, const Figures &figures)
{
    const auto worst = [](const std::vector<double> &values) {
        return *std::max_element(values.begin(), values.end());
    };
    report.add(prefix + QStringLiteral("publish_to_shown_ms_median"), median(figures.shownMs),
               QStringLiteral("ms"));
    report.add(prefix + QStringLiteral("publish_to_shown_ms_worst"), worst(figures.shownMs),
               QStringLiteral("ms"));
    report.add(prefix + QStringLiteral("keystroke_ms_median"), median(figures.keystrokeMs),
               QStringLiteral("ms"));
    report.add(prefix + QStringLiteral("keystroke_ms_worst"), worst(figures.keystrokeMs),
               QStringLiteral("ms"));
    if (figures.scrollMs.empty())
        return;
    report.add(prefix + QStringLiteral("scroll_page_ms_median"), median(figures.scrollMs),
               QStringLiteral("ms"));
    report.add(prefix + QStringLiteral("scroll_page_ms_worst"), worst(figures.scrollMs),
               QStringLiteral("ms"));
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    BenchReport report(QStringLiteral("channels"));

    LocalHttpServer server;
    if (!server.listen()) {
        report.note(QStringLiteral("the local server does not listen"));
        return 1;
    }
    const QByteArray playlist = makeSyntheticPlaylist(entryCount);
    server.route(QStringLiteral("/big.m3u"),
                 HttpResponse::text(playlistWithGuide(playlist, {}), "audio/x-mpegurl"));
    const QUrl address = server.url(QStringLiteral("/big.m3u"));
    server.route(QStringLiteral("/guide.xml"),
                 HttpResponse::text(guideFor(playlist), "application/xml"));
    server.route(
        QStringLiteral("/guided.m3u"),
        HttpResponse::text(
            playlistWithGuide(playlist, server.url(QStringLiteral("/guide.xml")).toEncoded()),
            "audio/x-mpegurl"));
    const QUrl guidedAddress = server.url(QStringLiteral("/guided.m3u"));
    PlayerModel model(std::make_unique<ScriptedMediaPlayer>());
    // Connected before any view: runs first when a playlist is published.
    QElapsedTimer sincePublished;
    QObject::connect(&model, &PlayerModel::playlistChanged, [&] { sincePublished.start(); });
    report.note(QStringLiteral("%1 channels published %2 times; %3 keystrokes typing and "
                               "erasing \"%4\", without and with a country chosen, then 40 "
                               "pages scrolled in the list alone; each until drawn")
                    .arg(entryCount)
                    .arg(publishRuns)
                    .arg(searchText.size() * 4)
                    .arg(searchText));

    // The channel list alone, in a window of its own.
    {
        ChannelList channels(model);
        channels.resize(ContentView::sidebarWidth, 720);
        channels.show();
        Figures figures;
        if (!QTest::qWaitForWindowExposed(&channels)
            || !measure(model, address, sincePublished, channels, channels, figures)) {
            report.note(QStringLiteral("the channel list did not load the playlist"));
            return 1;
        }
        addFigures(report, QString(), figures);
    }

    // The same with a guide: every row has a programme on now, drawn in a third line.
    {
        ChannelList channels(model);
        channels.resize(ContentView::sidebarWidth, 720);
        channels.show();
        Figures figures;
        if (!QTest::qWaitForWindowExposed(&channels)
            || !measure(model, guidedAddress, sincePublished, channels, channels, figures, true)) {
            report.note(QStringLiteral("the channel list did not load the playlist and guide"));
            return 1;
        }
        addFigures(report, QStringLiteral("guide_"), figures);
    }

    // The whole player window. Its video view makes every redraw go through OpenGL, which is
    // software-rendered on the benchmark's virtual display.
    {
        PlayerWindow window(model);
        window.resize(1000, 720);
        window.show();
        window.contentView()->setShowSidebar(true);
        Figures figures;
        if (!QTest::qWaitForWindowExposed(&window)
            || !measure(model, address, sincePublished, window,
                        *window.contentView()->channelList(), figures)) {
            report.note(QStringLiteral("the player window did not load the playlist"));
            return 1;
        }
        addFigures(report, QStringLiteral("window_"), figures);
    }

    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json)) {
        report.note(QStringLiteral("cannot write %1").arg(json));
        return 1;
    }
    return 0;
}
