// The programme guide in the window, on playlists and guides from a real local server: rows
// unchanged without a guide, a third line with a bar with one, the playing channel's now and
// next over the picture, one timer for programme boundaries, "Open Guide…", and a guide
// dropped with its playlist.
#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "model/playernotifications.h"
#include "scriptedmediaplayer.h"
#include "testdesktop.h"
#include "ui/channellist.h"
#include "ui/channellistmodel.h"
#include "ui/channelrowdelegate.h"
#include "ui/contentview.h"
#include "ui/nownextoverlay.h"
#include "ui/openguidedialog.h"
#include "ui/playerwindow.h"
#include "ui/programmetext.h"
#include "windowactivation.h"

#include <QDateTime>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace {

QByteArray xmltvTime(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc())
               .toString(u"yyyyMMddHHmmss"_s)
               .toLatin1()
        + " +0000";
}

struct Slot
{
    QByteArray channel;
    qint64 start;
    qint64 stop;
    QByteArray title;
};

QByteArray guideXml(const QList<Slot> &programmes)
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tv>\n";
    for (const QByteArray channel : {"one", "two"})
        xml += "<channel id=\"" + channel + "\"><display-name>" + channel
            + "</display-name></channel>\n";
    for (const Slot &slot : programmes) {
        xml += "<programme channel=\"" + slot.channel + "\" start=\"" + xmltvTime(slot.start)
            + "\" stop=\"" + xmltvTime(slot.stop) + "\"><title>"
            + QByteArray(slot.title).replace("&", "&amp;") + "</title></programme>\n";
    }
    return xml + "</tv>\n";
}

QByteArray playlist(const QByteArray &header)
{
    return "#EXTM3U" + header
        + "\n#EXTINF:-1 tvg-id=\"one\" group-title=\"News\",Channel "
          "One\nhttp://127.0.0.1:9/1.m3u8\n"
          "#EXTINF:-1 tvg-id=\"two\",Channel Two\nhttp://127.0.0.1:9/2.m3u8\n"
          "#EXTINF:-1,Channel Three\nhttp://127.0.0.1:9/3.m3u8\n";
}

} // namespace

class TestGuideWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<LocalHttpServer> m_server;
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;
    qint64 m_now = 0;

    ContentView *content() { return m_window->contentView(); }
    QListView *list() { return content()->channelList()->listView(); }
    ChannelListModel *rows() { return content()->channelList()->listModel(); }
    NowNextOverlay *overlay() { return content()->nowNextOverlay(); }

    // Two channels with programmes around now: one on now since ten minutes, then another.
    void serveGuide(const QString &path, qint64 boundaryIn = 3000)
    {
        m_server->route(path,
                        HttpResponse::text(guideXml({
                            {"one", m_now - 600, m_now + boundaryIn, "Morning News"},
                            {"one", m_now + boundaryIn, m_now + 7200, "Weather & Sport"},
                            {"two", m_now - 60, m_now + 3540, "Film"},
                        })));
    }
    void openPlaylist(const QByteArray &text)
    {
        m_server->route(u"/list.m3u"_s, HttpResponse::text(text));
        QSignalSpy published(m_model.get(), &PlayerModel::playlistChanged);
        m_model->openRemote(m_server->url(u"/list.m3u"_s).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(published.size(), 1, 10000);
        QCOMPARE(m_model->playlist().size(), 3);
    }
    QAction *menuAction(const QString &menu, const QString &title)
    {
        for (QAction *top : m_window->menuBar()->actions())
            if (top->text().remove(u'&') == menu)
                for (QAction *action : top->menu()->actions())
                    if (action->text() == title)
                        return action;
        return nullptr;
    }
    QString programmeOf(int row)
    {
        return rows()->index(row).data(ChannelListModel::ProgrammeRole).toString();
    }
    int rowHeight() { return list()->visualRect(rows()->index(0)).height(); }

private Q_SLOTS:
    void init()
    {
        m_now = QDateTime::currentSecsSinceEpoch();
        m_server = std::make_unique<LocalHttpServer>();
        QVERIFY(m_server->listen());
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_window = std::make_unique<PlayerWindow>(*m_model);
        m_window->resize(900, 600);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QVERIFY(WindowActivation::activate(m_window.get()));
        content()->setShowSidebar(true);
        QTRY_COMPARE(content()->sidebar()->x(), 0);
    }

    void cleanup()
    {
        m_window.reset();
        m_model.reset();
        m_server.reset();
    }

    void withoutAGuideRowsAreAsBefore()
    {
        openPlaylist(playlist(""));
        QTRY_VERIFY(list()->visualRect(rows()->index(0)).isValid());
        QCOMPARE(rowHeight(), ChannelRowDelegate::rowHeight + ChannelRowDelegate::rowSpacing);
        QVERIFY(!rows()->index(0).data(ChannelListModel::ProgrammeRole).isValid());
        QVERIFY(!rows()->hasGuide());
        QVERIFY(!m_model->isLoadingGuides());
        m_model->playChannel(m_model->playlist()[0]);
        QVERIFY(overlay()->isHidden());
        TestDesktop::saveScreenshot(*m_window, u"guide-none"_s);
    }

    void aGuideAddsTheProgrammeLineToRows()
    {
        serveGuide(u"/epg/guide.xml"_s);
        openPlaylist(playlist(" x-tvg-url=\"epg/guide.xml\""));
        QTRY_VERIFY_WITH_TIMEOUT(rows()->hasGuide(), 10000);
        QTRY_COMPARE(rowHeight(),
                     ChannelRowDelegate::rowHeight + ChannelRowDelegate::rowSpacing
                         + ChannelRowDelegate::programmeLineHeight);
        const auto clock = [](qint64 seconds) {
            return QDateTime::fromSecsSinceEpoch(seconds).toString(u"HH:mm"_s);
        };
        QCOMPARE(programmeOf(0),
                 clock(m_now - 600) + u'–' + clock(m_now + 3000) + u"  Morning News"_s);
        QCOMPARE(programmeOf(1), clock(m_now - 60) + u'–' + clock(m_now + 3540) + u"  Film"_s);
        QCOMPARE(programmeOf(2), QString()); // no channel in the guide
        const double progress
            = rows()->index(0).data(ChannelListModel::ProgrammeProgressRole).toDouble();
        QVERIFY2(progress > 0.15 && progress < 0.2, qPrintable(QString::number(progress)));
        // The tooltip keeps its text.
        QCOMPARE(rows()->index(0).data(Qt::ToolTipRole).toString(), u"Play Channel One"_s);
        TestDesktop::saveScreenshot(*m_window, u"guide-rows"_s);

        // The third line is drawn: the row's bottom band holds dark text pixels and the bar.
        const QRect row = list()->visualRect(rows()->index(0));
        const QImage picture = list()->viewport()->grab(row).toImage();
        const int bandTop = ChannelRowDelegate::rowHeight - 2;
        int inked = 0;
        for (int y = bandTop; y < row.height() - ChannelRowDelegate::rowSpacing; ++y)
            for (int x = 60; x < row.width() - 40; ++x)
                inked += qGray(picture.pixel(x, y)) < 200;
        QVERIFY2(inked > 40, qPrintable(QString::number(inked)));
    }

    void thePlayingChannelsNowAndNextShowOverThePicture()
    {
        serveGuide(u"/guide.xml"_s);
        openPlaylist(playlist(" url-tvg=\"guide.xml\""));
        QTRY_VERIFY_WITH_TIMEOUT(rows()->hasGuide(), 10000);
        overlay()->setShownDuration(600);
        m_model->playChannel(m_model->playlist()[0]);
        QVERIFY(overlay()->isVisible());
        const ProgrammeGuide::NowNext expected = m_model->playingProgrammes(m_now);
        QCOMPARE(overlay()->lines(),
                 (QStringList {u"Now  "_s + ProgrammeText::line(*expected.now),
                               u"Next  "_s + ProgrammeText::line(*expected.next)}));
        QVERIFY(content()->rect().contains(overlay()->geometry()));
        TestDesktop::saveScreenshot(*m_window, u"guide-now-next"_s);
        // It leaves by itself, and a pointer moving over the picture brings it back.
        QTRY_VERIFY(overlay()->isHidden());
        const QPoint overPicture
            = content()->mapTo(m_window.get(), QPoint(content()->width() - 100, 100));
        QCursor::setPos(m_window->mapToGlobal(overPicture));
        Q_EMIT PlayerNotifications::shared().playerMouseMoved(m_window->windowHandle());
        QVERIFY(overlay()->isVisible());
        QTRY_VERIFY(overlay()->isHidden());

        // A channel without programmes shows none.
        m_model->playChannel(m_model->playlist()[2]);
        QVERIFY(overlay()->isHidden());
    }

    void oneTimerMovesEverythingOnAtTheBoundary()
    {
        serveGuide(u"/soon.xml"_s, 3); // Morning News ends three seconds from now
        openPlaylist(playlist(" x-tvg-url=\"soon.xml\""));
        QTRY_VERIFY_WITH_TIMEOUT(rows()->hasGuide(), 10000);
        m_model->playChannel(m_model->playlist()[0]);
        QVERIFY(programmeOf(0).endsWith(u"Morning News"_s));
        QSignalSpy changes(m_model.get(), &PlayerModel::programmesChanged);
        QTRY_VERIFY2_WITH_TIMEOUT(programmeOf(0).endsWith(u"Weather & Sport"_s),
                                  qPrintable(programmeOf(0)), 8000);
        QTRY_VERIFY(overlay()->lines().value(0).endsWith(u"Weather & Sport"_s));
        // One change for the boundary, none in between: nothing polls the rows.
        QTest::qWait(1500);
        QCOMPARE(changes.size(), 1);
    }

    void openGuideAddsAGuideToThePlaylist()
    {
        openPlaylist(playlist(""));
        QTemporaryDir dir;
        const QString path = dir.filePath(u"local guide.xml"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(guideXml({{"two", m_now - 60, m_now + 600, "From a file"}}));
        file.close();
        QAction *open = menuAction(u"File"_s, u"Open Guide…"_s);
        QVERIFY(open);
        open->trigger();
        OpenGuideDialog *dialog = nullptr;
        QTRY_VERIFY((dialog = m_window->findChild<OpenGuideDialog *>()) && dialog->isVisible());
        QVERIFY(!dialog->openButton()->isEnabled());
        // The file chooser fills the field.
        m_model->setFileChooser([path](const OpenPanelRequest &request) -> std::optional<QString> {
            return request.title == u"Open Programme Guide" ? std::optional(path) : std::nullopt;
        });
        dialog->chooseFileButton()->click();
        QCOMPARE(dialog->addressField()->text(), path);
        dialog->openButton()->click();
        QTRY_VERIFY_WITH_TIMEOUT(rows()->hasGuide(), 10000);
        QVERIFY(programmeOf(1).endsWith(u"From a file"_s));
        QCOMPARE(m_model->openedGuides(), QList<QUrl> {QUrl::fromLocalFile(path)});

        // The opened guide stays for the next playlist of the session.
        openPlaylist(playlist(" "));
        QTRY_VERIFY_WITH_TIMEOUT(rows()->hasGuide(), 10000);

        // The clear button forgets it: the next playlist comes without it.
        m_model->clearNetworkStream();
        QVERIFY(!rows()->hasGuide());
        QVERIFY(m_model->openedGuides().isEmpty());
        openPlaylist(playlist(""));
        QTest::qWait(500);
        QVERIFY(!rows()->hasGuide());
        QVERIFY(!m_model->isLoadingGuides());

        // Something that is no guide address is refused with a notice.
        m_model->openGuide(u"ftp://example.com/guide.xml"_s);
        QCOMPARE(m_model->toastMessage(), u"Enter a guide file or an http or https address."_s);
    }

    void anotherPlaylistDropsTheGuideUnderWay()
    {
        serveGuide(u"/slow.xml"_s);
        m_server->hold(QRegularExpression(u"^/slow"_s));
        openPlaylist(playlist(" x-tvg-url=\"slow.xml\""));
        QTRY_COMPARE(m_server->heldCount(), 1);
        QVERIFY(m_model->isLoadingGuides());
        // The channel list does not wait for the guide.
        QCOMPARE(rows()->rowCount(), 3);
        openPlaylist(playlist(""));
        QTRY_COMPARE(m_server->openConnectionCount(u"/slow.xml"_s), 0);
        QVERIFY(!m_model->isLoadingGuides());
        m_server->hold(QRegularExpression());
        QTest::qWait(300);
        QVERIFY(!rows()->hasGuide());
    }

    void aBadGuideEndsInANotice()
    {
        m_server->route(u"/broken.xml"_s, HttpResponse::text("this is not a guide at all"));
        openPlaylist(playlist(" x-tvg-url=\"broken.xml\""));
        QTRY_COMPARE_WITH_TIMEOUT(m_model->toastMessage(),
                                  u"The file “broken.xml” isn’t a programme guide (XMLTV)."_s,
                                  10000);
        QVERIFY(!rows()->hasGuide());
        QCOMPARE(rowHeight(), ChannelRowDelegate::rowHeight + ChannelRowDelegate::rowSpacing);
    }
};

QTEST_MAIN(TestGuideWindow)
#include "tst_guidewindow.moc"
