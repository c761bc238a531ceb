// Catch-up in the window: a channel's programmes opened over the channel list from a real
// local server's playlist and guide, past programmes played from that server's archives
// (Flussonic, Xtream Codes, shift, append) whose pictures show the moment they hold, seeks
// inside them, "Play from Start" and "Back to Live".
#include "httpserver/catchuparchive.h"
#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "surface/mpvframegrabber.h"
#include "testmedia.h"
#include "ui/channellist.h"
#include "ui/channellistmodel.h"
#include "ui/programmelist.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 programmeSeconds = 120;

QString xmltvTime(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc()).toString(u"yyyyMMddHHmmss"_s)
        + u" +0000"_s;
}

QString showTitle(qint64 start)
{
    return u"Show "_s + QDateTime::fromSecsSinceEpoch(start, QTimeZone::utc()).toString(u"HH:mm"_s);
}

} // namespace

class TestCatchup : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<LocalHttpServer> m_server;
    std::unique_ptr<CatchupArchive> m_archive;
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<ChannelList> m_list;
    std::unique_ptr<MpvFrameGrabber> m_grabber;
    qint64 m_firstStart = 0; // the guide's first programme, on a whole minute

    MpvPlayer &mpv() { return static_cast<MpvPlayer &>(m_model->player()); }

    // The row of the channel named name.
    int rowOf(const QString &name)
    {
        for (int row = 0; row < m_list->listModel()->rowCount(); ++row)
            if (m_list->listModel()->entry(row).name() == name)
                return row;
        return -1;
    }

    void rightClick(int row)
    {
        QListView *view = m_list->listView();
        const QRect rect = view->visualRect(view->model()->index(row, 0));
        // Through the window, as the window system sends it: the press becomes a context menu
        // request there.
        QTest::mouseClick(m_list->windowHandle(), Qt::RightButton, {},
                          view->viewport()->mapTo(m_list.get(), rect.center()));
    }

    // The programme list's item of the programme that starts at start.
    QListWidgetItem *itemAt(qint64 start)
    {
        ProgrammeList *programmes = m_list->programmeList();
        const QString time = QDateTime::fromSecsSinceEpoch(start).toString(u"HH:mm"_s);
        for (int i = 0; i < programmes->listView()->count(); ++i) {
            QListWidgetItem *item = programmes->listView()->item(i);
            if (item->text().contains(time + u"  "_s + showTitle(start)))
                return item;
        }
        return nullptr;
    }

    void clickItem(QListWidgetItem *item)
    {
        QListWidget *view = m_list->programmeList()->listView();
        view->scrollToItem(item);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                          view->visualItemRect(item).center());
    }

    // The moment the picture shows once it shows one within seconds of from.
    std::optional<qint64> shownNear(qint64 from, qint64 slack = 8)
    {
        std::optional<qint64> shown;
        // Not found in time: what the picture shows last is reported.
        [[maybe_unused]] const bool found = QTest::qWaitFor(
            [&] {
                shown = CatchupArchive::momentShown(m_grabber->grab());
                return shown && *shown >= from && *shown <= from + slack;
            },
            20000);
        return shown;
    }

    // A past programme, played by a click in its channel's list.
    qint64 playPast(const QString &channel, int programmesAgo)
    {
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        const qint64 onAir = now - (now - m_firstStart) % programmeSeconds;
        const qint64 start = onAir - programmesAgo * programmeSeconds;
        rightClick(rowOf(channel));
        if (!m_list->showsProgrammes())
            return 0;
        QListWidgetItem *item = itemAt(start);
        if (!item)
            return 0;
        clickItem(item);
        return start;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        const QDir www(m_dir.filePath(u"www"_s));
        QVERIFY(QDir().mkpath(www.filePath(u"fs/news"_s)));
        QVERIFY(QDir().mkpath(www.filePath(u"live/u/p"_s)));
        QVERIFY(QDir().mkpath(www.filePath(u"shift"_s)));
        QVERIFY(QDir().mkpath(www.filePath(u"append"_s)));
        const QString live = m_dir.filePath(u"live.ts"_s);
        QVERIFY(TestMedia::makeTransportStream(live, 30));
        for (const QString &path : {u"fs/news/mpegts"_s, u"live/u/p/101.ts"_s, u"shift/sport.ts"_s,
                                    u"append/film.ts"_s, u"plain.ts"_s})
            QVERIFY(QFile::copy(live, www.filePath(path)));

        m_server = std::make_unique<LocalHttpServer>();
        QVERIFY(m_server->listen());
        m_server->serveDirectory(www.path());
        m_archive = std::make_unique<CatchupArchive>(m_dir.filePath(u"clips"_s));
        m_archive->serveOn(*m_server);

        // Two-minute programmes from half an hour ago to half an hour ahead.
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        m_firstStart = now - now % 60 - 30 * 60;
        QByteArray guide = "<tv>";
        for (const QByteArray id : {"news", "xc", "sport", "film", "plain"}) {
            guide += "<channel id=\"" + id + "\"><display-name>" + id + "</display-name></channel>";
            for (qint64 start = m_firstStart; start < now + 30 * 60; start += programmeSeconds) {
                guide += "<programme channel=\"" + id + "\" start=\"" + xmltvTime(start).toLatin1()
                    + "\" stop=\"" + xmltvTime(start + programmeSeconds).toLatin1() + "\"><title>"
                    + showTitle(start).toUtf8() + "</title></programme>";
            }
        }
        guide += "</tv>";
        m_server->route(u"/guide.xml"_s, HttpResponse::text(guide, "application/xml"));
        const auto address = [this](const QString &path) {
            return m_server->url(path).toEncoded();
        };
        const QByteArray playlist = "#EXTM3U url-tvg=\"" + address(u"/guide.xml"_s)
            + "\" catchup-days=\"2\"\n" + "#EXTINF:-1 tvg-id=\"news\" catchup=\"flussonic\",News\n"
            + address(u"/fs/news/mpegts"_s) + "\n#EXTINF:-1 tvg-id=\"xc\" catchup=\"xc\",Xtream\n"
            + address(u"/live/u/p/101.ts"_s)
            + "\n#EXTINF:-1 tvg-id=\"sport\" catchup=\"shift\",Sport\n"
            + address(u"/shift/sport.ts"_s)
            + "\n#EXTINF:-1 tvg-id=\"film\" catchup=\"append\" "
              "catchup-source=\"?archive={utc}&end={utcend}\",Film\n"
            + address(u"/append/film.ts"_s) + "\n#EXTINF:-1 tvg-id=\"plain\",Plain\n"
            + address(u"/plain.ts"_s) + "\n#EXTINF:-1 catchup=\"shift\",Unlisted\n"
            + address(u"/plain.ts"_s)
            + "\n#EXTINF:-1 tvg-id=\"news\" catchup=\"default\" catchup-source=\""
            + address(u"/missing/{utc}.ts"_s) + "\",Broken\n" + address(u"/plain.ts"_s) + "\n";
        m_server->route(u"/tv.m3u"_s, HttpResponse::text(playlist, "audio/x-mpegurl"));

        m_model = std::make_unique<PlayerModel>(
            std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        m_grabber = std::make_unique<MpvFrameGrabber>(mpv().handle());
        m_list = std::make_unique<ChannelList>(*m_model);
        m_list->resize(260, 700);
        m_list->show();
        m_list->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_list.get()));
        m_model->openRemote(m_server->url(u"/tv.m3u"_s).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_list->listModel()->rowCount(), 7, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(
            !m_model->programmeGuide()->isEmpty() && !m_model->isLoadingGuides(), 20000);
    }

    // Each case starts from the channel list.
    void init() { m_list->closeProgrammes(); }

    void cleanupTestCase()
    {
        if (m_grabber)
            m_grabber->stop();
        m_list.reset();
        m_grabber.reset();
        m_model.reset();
    }

    void aRightClickOpensTheProgrammesByDay()
    {
        rightClick(rowOf(u"News"_s));
        QVERIFY(m_list->showsProgrammes());
        ProgrammeList *programmes = m_list->programmeList();
        QVERIFY(programmes->listView()->hasFocus());
        const QList<ProgrammeRows::Row> &rows = programmes->rows();
        QVERIFY(!rows.isEmpty());
        QVERIFY(rows.first().isDay);
        // The programme on air is marked, current and shown; past ones carry the archive mark.
        QListWidgetItem *current = programmes->listView()->currentItem();
        QVERIFY(current);
        QVERIFY(current->text().startsWith(u"\u25b6 "_s));
        QVERIFY(programmes->listView()->viewport()->rect().intersects(
            programmes->listView()->visualItemRect(current)));
        int archived = 0;
        for (const ProgrammeRows::Row &row : rows) {
            if (!row.isDay && row.when == ProgrammeRows::When::past) {
                QVERIFY(row.archived);
                ++archived;
            }
            if (!row.isDay && row.when == ProgrammeRows::When::future)
                QVERIFY(!row.archived);
        }
        QVERIFY(archived >= 10);
        QTest::mouseClick(programmes->backButton(), Qt::LeftButton);
        QVERIFY(!m_list->showsProgrammes());
        QVERIFY(m_list->listView()->hasFocus());
    }

    void theKeyboardOpensThemToo()
    {
        QListView *view = m_list->listView();
        view->setFocus();
        view->setCurrentIndex(view->model()->index(rowOf(u"Sport"_s), 0));
        QTest::keyClick(view, Qt::Key_F10, Qt::ShiftModifier);
        QVERIFY(m_list->showsProgrammes());
        QCOMPARE(m_list->programmeList()->channel().name(), u"Sport"_s);
        QTest::keyClick(m_list->programmeList()->listView(), Qt::Key_Escape);
        QVERIFY(!m_list->showsProgrammes());
        QTest::keyClick(view, Qt::Key_Menu);
        QVERIFY(m_list->showsProgrammes());
        QTest::mouseClick(m_list->programmeList()->backButton(), Qt::LeftButton);
    }

    void aChannelWithoutArchiveListsTodayUnmarked()
    {
        rightClick(rowOf(u"Plain"_s));
        QVERIFY(m_list->showsProgrammes());
        const QList<ProgrammeRows::Row> &rows = m_list->programmeList()->rows();
        QVERIFY(!rows.isEmpty());
        for (const ProgrammeRows::Row &row : rows)
            QVERIFY(!row.archived);
        // A past programme without an archive plays nothing.
        const QString before = m_model->title();
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        QListWidgetItem *past = itemAt(now - (now - m_firstStart) % programmeSeconds - 600);
        QVERIFY(past);
        clickItem(past);
        QCOMPARE(m_model->title(), before);
        QVERIFY(!m_model->isPlayingArchive());
        QTest::mouseClick(m_list->programmeList()->backButton(), Qt::LeftButton);
    }

    void aChannelWithArchiveButNoGuideSaysSo()
    {
        rightClick(rowOf(u"Unlisted"_s));
        QVERIFY(m_list->showsProgrammes());
        QVERIFY(m_list->programmeList()->emptyLabel()->isVisible());
        QCOMPARE(m_list->programmeList()->emptyLabel()->text(),
                 u"No programme guide for this channel."_s);
        QTest::mouseClick(m_list->programmeList()->backButton(), Qt::LeftButton);
    }

    void pastProgrammesPlayFromEachKindOfArchive_data()
    {
        QTest::addColumn<QString>("channel");
        QTest::addColumn<int>("seekTo");
        QTest::newRow("flussonic") << u"News"_s << 60;
        QTest::newRow("xc") << u"Xtream"_s << 60;
        QTest::newRow("shift") << u"Sport"_s << 45;
        QTest::newRow("append") << u"Film"_s << 75;
    }

    void pastProgrammesPlayFromEachKindOfArchive()
    {
        QFETCH(QString, channel);
        QFETCH(int, seekTo);
        const qint64 start = playPast(channel, 3);
        QVERIFY(start > 0);
        QTRY_VERIFY(m_model->isPlayingArchive());
        QCOMPARE(m_model->title(), channel + u" \u2014 "_s + showTitle(start));
        QVERIFY(!m_model->isLiveStream());
        QCOMPARE(m_model->duration(), double(programmeSeconds));
        QCOMPARE(m_model->playingChannel()->name(), channel);
        QTRY_VERIFY_WITH_TIMEOUT(m_archive->askedMoments().contains(start), 10000);
        const std::optional<qint64> shown = shownNear(start);
        QVERIFY2(shown && *shown >= start && *shown <= start + 8,
                 qPrintable(u"shows %1, asked %2"_s.arg(shown.value_or(-1)).arg(start)));

        // A seek moves to that moment of the programme, whichever way the source follows.
        m_model->seek(seekTo);
        const std::optional<qint64> after = shownNear(start + seekTo);
        QVERIFY2(after && *after >= start + seekTo && *after <= start + seekTo + 8,
                 qPrintable(u"shows %1, sought %2"_s.arg(after.value_or(-1)).arg(start + seekTo)));
        QTRY_VERIFY(m_model->currentTime() >= seekTo && m_model->currentTime() < seekTo + 10);
        QCOMPARE(m_model->duration(), double(programmeSeconds));
        // Skips stay inside the programme.
        m_model->skip(10000);
        QVERIFY(m_model->currentTime() <= double(programmeSeconds));
        QTest::mouseClick(m_list->programmeList()->backButton(), Qt::LeftButton);
    }

    void anArchiveThatFailsSaysWhy()
    {
        const qint64 start = playPast(u"Broken"_s, 2);
        QVERIFY(start > 0);
        const QString title = u"Broken \u2014 "_s + showTitle(start);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(), u"Could not play %1."_s.arg(title),
                                  15000);
        QVERIFY(!m_model->toastDetail().isEmpty());
        QVERIFY(!m_model->isPlayingArchive());
        QCOMPARE(m_model->title(), PlayerModel::noMediaTitle.toString());
        QTRY_COMPARE(m_model->duration(), 0.0);
    }

    void theProgrammeOnAirPlaysFromItsStartOrLive()
    {
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        const qint64 onAir = now - (now - m_firstStart) % programmeSeconds;
        rightClick(rowOf(u"News"_s));
        QListWidgetItem *item = itemAt(onAir);
        QVERIFY(item);
        clickItem(item);
        QMenu *menu = nullptr;
        QTRY_VERIFY((menu = m_list->programmeList()->onAirMenu()));
        QStringList titles;
        for (QAction *action : menu->actions())
            titles.append(action->text());
        QCOMPARE(titles, (QStringList {u"Play from Start"_s, u"Watch Live"_s}));
        QAction *fromStart = menu->actions().first();
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(fromStart).center());
        QTRY_VERIFY(m_model->isPlayingArchive());
        QTRY_VERIFY_WITH_TIMEOUT(m_archive->askedMoments().contains(onAir), 10000);
        QVERIFY(shownNear(onAir));

        // Back to Live: the channel plays live again.
        m_model->backToLive();
        QVERIFY(!m_model->isPlayingArchive());
        QVERIFY(m_model->isLiveStream());
        QCOMPARE(m_model->title(), u"News"_s);

        // "Watch Live" from the same menu.
        clickItem(itemAt(onAir));
        QTRY_VERIFY((menu = m_list->programmeList()->onAirMenu()));
        QAction *live = menu->actions().last();
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(live).center());
        QTRY_COMPARE(m_model->title(), u"News"_s);
        QVERIFY(m_model->isLiveStream());

        // A programme to come does nothing.
        const int asked = m_archive->askedMoments().size();
        clickItem(itemAt(onAir + 2 * programmeSeconds));
        QVERIFY(!m_list->programmeList()->onAirMenu());
        QCOMPARE(m_model->title(), u"News"_s);
        QCOMPARE(m_archive->askedMoments().size(), asked);
        QTest::mouseClick(m_list->programmeList()->backButton(), Qt::LeftButton);
    }

    void clearingForgetsTheGuides()
    {
        rightClick(rowOf(u"News"_s));
        QVERIFY(m_list->showsProgrammes());
        m_model->clearNetworkStream();
        QVERIFY(m_model->programmeGuide()->isEmpty());
        QVERIFY(!m_list->showsProgrammes());
        QVERIFY(m_list->programmeList()->rows().isEmpty());
    }
};

QTEST_MAIN(TestCatchup)
#include "tst_catchup.moc"
