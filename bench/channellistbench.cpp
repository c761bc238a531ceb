// How the player window copes with a huge IPTV playlist: the time from the model publishing
// 200,000 channels to the list drawn on screen, and the main thread's time per keystroke in the
// channel search, until the filtered list is drawn.

#include "benchreport.h"
#include "eventloopwait.h"
#include "syntheticplaylist.h"

#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "ui/channellist.h"
#include "ui/channellistmodel.h"
#include "ui/contentview.h"
#include "ui/playerwindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListView>
#include <QTest>

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
};

// Publishes the playlist a few times and types into the search, each time until top, which
// holds channels, has drawn the result.
bool measure(PlayerModel &model, const QUrl &address, const QElapsedTimer &sincePublished,
             QWidget &top, ChannelList &channels, Figures &figures)
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
    return true;
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
    server.route(QStringLiteral("/big.m3u"),
                 HttpResponse::text(makeSyntheticPlaylist(entryCount), "audio/x-mpegurl"));
    const QUrl address = server.url(QStringLiteral("/big.m3u"));
    PlayerModel model(std::make_unique<ScriptedMediaPlayer>());
    // Connected before any view: runs first when a playlist is published.
    QElapsedTimer sincePublished;
    QObject::connect(&model, &PlayerModel::playlistChanged, [&] { sincePublished.start(); });
    report.note(QStringLiteral("%1 channels published %2 times; %3 keystrokes typing and "
                               "erasing \"%4\", without and with a country chosen; each until "
                               "drawn")
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
