// The whole player window under a real X server: the sliding sidebar and its focus, the window
// following the video's shape, drops, clearing, the title, the menus and the notice.
#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "model/playernotifications.h"
#include "recording/playerrecordingcontroller.h"
#include "recordingrecorder.h"
#include "scriptedmediaplayer.h"
#include "surface/playersurface.h"
#include "testdesktop.h"
#include "ui/channellist.h"
#include "ui/channellistmodel.h"
#include "ui/contentview.h"
#include "ui/controlbutton.h"
#include "ui/networkpanel.h"
#include "ui/playercontrolbar.h"
#include "ui/playerwindow.h"
#include "ui/toastoverlay.h"
#include "ui/volumeindicator.h"
#include "ui/windowtitlesetter.h"
#include "windowactivation.h"

#include <QActionGroup>
#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QToolButton>

namespace {

const QString liveAddress = QStringLiteral("http://127.0.0.1:9/live/index.m3u8");

QByteArray playlistText(int count)
{
    QByteArray text = "#EXTM3U\n";
    for (int i = 0; i < count; ++i)
        text += "#EXTINF:-1 tvg-country=\"FR\" group-title=\"News\",Channel "
            + QByteArray::number(i) + "\nhttp://127.0.0.1:9/" + QByteArray::number(i) + ".m3u8\n";
    return text;
}

} // namespace

class TestPlayerWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;

    ScriptedMediaPlayer &player() { return static_cast<ScriptedMediaPlayer &>(m_model->player()); }
    ContentView *content() { return m_window->contentView(); }
    NetworkPanel *panel() { return content()->networkPanel(); }
    void resizeContent(QSize size)
    {
        m_window->resize(m_window->size() - content()->size() + size);
        QTRY_COMPARE(content()->size(), size);
    }
    QAction *menuAction(const QString &menu, const QString &title)
    {
        for (QAction *top : m_window->menuBar()->actions())
            if (top->text().remove(QLatin1Char('&')) == menu)
                for (QAction *action : top->menu()->actions())
                    if (action->text().section(u'\t', 0, 0) == title)
                        return action;
        return nullptr;
    }
    QMenu *submenuOf(const QString &menu)
    {
        for (QAction *top : m_window->menuBar()->actions())
            if (top->text().remove(QLatin1Char('&')) == menu)
                return top->menu();
        return nullptr;
    }
    QMenu *submenu(const QString &menu, const QString &title)
    {
        QAction *action = menuAction(menu, title);
        return action ? action->menu() : nullptr;
    }
    static QStringList texts(const QMenu *menu)
    {
        QStringList result;
        for (const QAction *action : menu->actions())
            result.append(action->isSeparator()
                              ? QStringLiteral("---")
                              : QString(QChar(action->isChecked() ? u'✓' : u' ')) + action->text());
        return result;
    }
    static MediaTracks filmTracks()
    {
        MediaTrack english {TrackKind::audio, 1, "eng", {}, "aac", 2, true, false, false, true};
        MediaTrack french {TrackKind::audio, 2, "fre", "Commentary", "aac", 2};
        MediaTrack subtitles {TrackKind::subtitle, 1, "eng", {}, "subrip"};
        return {english, french, subtitles};
    }
    void loadPlaylist(LocalHttpServer &server, int count)
    {
        server.route(QStringLiteral("/list.m3u"), HttpResponse::text(playlistText(count)));
        m_model->openRemote(server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), count, 10000);
    }

private Q_SLOTS:
    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        // No picture until a case plays one, so that the window keeps the shape a case gives.
        player().setPresentationSize({});
        m_window = std::make_unique<PlayerWindow>(*m_model);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        // No window manager activates windows under the test display.
        QVERIFY(WindowActivation::activate(m_window.get()));
    }

    void cleanup()
    {
        m_window.reset();
        m_model.reset();
    }

    void theSidebarSlidesInAndTheAddressFieldTakesTheFocus()
    {
        QVERIFY(!content()->showsSidebar());
        QVERIFY(!content()->sidebar()->isVisible());
        content()->setFocus();
        QElapsedTimer sinceShown;
        sinceShown.start();
        content()->setShowSidebar(true);
        QVERIFY(!panel()->isAddressFieldFocused());
        QTRY_VERIFY(panel()->isAddressFieldFocused());
        QVERIFY(sinceShown.elapsed() >= ContentView::addressFocusDelayMs);
        QTRY_COMPARE(content()->sidebar()->geometry(),
                     QRect(0, 0, ContentView::sidebarWidth, content()->height()));
        QCOMPARE(content()->surface()->x(), ContentView::sidebarWidth + 1);
        QCOMPARE(content()->controlBar()->x(), ContentView::sidebarWidth + 1);
        QCOMPARE(content()->controlBar()->y(), content()->height() - PlayerControlBar::barHeight);

        content()->setShowSidebar(false);
        QVERIFY(!panel()->isAddressFieldFocused());
        QTRY_VERIFY(!content()->sidebar()->isVisible());
        QCOMPARE(content()->surface()->x(), 0);
    }

    void hidingTheSidebarAtOnceLeavesTheFocusWhereItWas()
    {
        content()->controlBar()->setFocusPolicy(Qt::StrongFocus);
        content()->controlBar()->setFocus();
        content()->setShowSidebar(true);
        QTest::qWait(ContentView::addressFocusDelayMs / 4);
        content()->setShowSidebar(false);
        QTest::qWait(ContentView::addressFocusDelayMs * 2);
        QVERIFY(!panel()->isAddressFieldFocused());
        QCOMPARE(QApplication::focusWidget(), content()->controlBar());
    }

    void showingOrHidingTheSidebarFoldsTheNameField()
    {
        content()->setShowSidebar(true);
        panel()->setShowMovieName(true);
        content()->setShowSidebar(false);
        QVERIFY(!panel()->showsMovieName());
        content()->setShowSidebar(true);
        QVERIFY(!panel()->showsMovieName());
    }

    void theSidebarButtonTogglesTheSidebar()
    {
        content()->controlBar()->sidebarToggleRequested();
        QVERIFY(content()->showsSidebar());
        content()->controlBar()->sidebarToggleRequested();
        QVERIFY(!content()->showsSidebar());
    }

    void aClickOnTheVideoClosesTheSidebar()
    {
        content()->setShowSidebar(true);
        QTRY_VERIFY(content()->sidebar()->x() == 0);
        Q_EMIT PlayerNotifications::shared().playerSurfaceClicked(m_window->windowHandle());
        QVERIFY(!content()->showsSidebar());
        QTRY_VERIFY(!content()->sidebar()->isVisible());
        // With the sidebar hidden a click changes nothing.
        Q_EMIT PlayerNotifications::shared().playerSurfaceClicked(m_window->windowHandle());
        QVERIFY(!content()->showsSidebar());
    }

    void theSidebarWidensANarrowWindowAndHidingItDoesNotShrinkIt()
    {
        // The minimum is the window's, less what surrounds the content.
        const auto minimumContent = [this] {
            return m_window->minimumSize() - (m_window->size() - content()->size());
        };
        resizeContent({600, 380});
        QCOMPARE(minimumContent(), QSize(520, 360));
        content()->setShowSidebar(true);
        QTRY_COMPARE(content()->size(), QSize(780, 430));
        QCOMPARE(minimumContent(), QSize(780, 360));
        content()->setShowSidebar(false);
        QTRY_COMPARE(minimumContent(), QSize(520, 360));
        QCOMPARE(content()->size(), QSize(780, 430));

        // A tall window keeps its height.
        resizeContent({600, 700});
        content()->setShowSidebar(true);
        QTRY_COMPARE(content()->size(), QSize(780, 700));
    }

    void theWindowTakesTheVideosShape()
    {
        resizeContent({1000, 500});
        player().setPresentationSize({640, 360});
        m_model->play(QUrl(QStringLiteral("file:///media/wide.mp4")), std::nullopt, false);
        // 1,000 / (16 / 9) + 34 = 596.5.
        QTRY_COMPARE_WITH_TIMEOUT(content()->size(), QSize(1000, 597), 3000);
        QVERIFY(!content()->aspectConstraint().isEmpty());

        resizeContent({520, 500});
        content()->setPortraitMode(PortraitDisplayMode::fill);
        QTRY_COMPARE(content()->size(), QSize(520, 958));
        content()->setPortraitMode(PortraitDisplayMode::normal);
        QTRY_COMPARE(content()->size(), QSize(520, 360));
    }

    void audioWithoutPictureFreesTheShapeAndKeepsTheSize()
    {
        player().setPresentationSize({640, 360});
        m_model->play(QUrl(QStringLiteral("file:///media/wide.mp4")), std::nullopt, false);
        QTRY_VERIFY(!content()->aspectConstraint().isEmpty());
        player().setPresentationSize({});
        m_model->play(QUrl(QStringLiteral("file:///media/song.mp3")), std::nullopt, false);
        const QSize size = content()->size();
        QTRY_VERIFY(content()->aspectConstraint().isEmpty());
        QTest::qWait(PlayerModel::timeObserverIntervalMs * 2);
        QCOMPARE(content()->size(), size);
    }

    void theShapeIsLeftAloneInFullScreen()
    {
        resizeContent({900, 500});
        content()->setFullScreen(true);
        player().setPresentationSize({640, 360});
        m_model->play(QUrl(QStringLiteral("file:///media/wide.mp4")), std::nullopt, false);
        QTRY_COMPARE(m_model->videoAspectRatio(), 640.0 / 360.0);
        QTest::qWait(100);
        QCOMPARE(content()->size(), QSize(900, 500));
        content()->setFullScreen(false);
    }

    void trackTitlesCannotSpoofTheMenus()
    {
        QMenu *audio = submenu(QStringLiteral("Playback"), QStringLiteral("Audio Track"));
        QVERIFY(audio);
        player().setPresentationSize({640, 360});
        m_model->play(QUrl::fromLocalFile(QStringLiteral("/media/spoof.mkv")), std::nullopt, false);
        const QStringList titles {QStringLiteral("&Quit"), QStringLiteral("Music\tCtrl+Q"),
                                  QStringLiteral("Photo \u202Egnp.exe"),
                                  QStringLiteral("\u05E2\u05D1\u05E8\u05D9\u05EA"),
                                  QString(5000, u'w')};
        MediaTracks tracks;
        for (qsizetype i = 0; i < titles.size(); ++i)
            tracks.append(MediaTrack {TrackKind::audio, i + 1, {}, titles[i], "aac", 2});
        for (int refill = 0; refill < 5; ++refill)
            player().setTracks(tracks);
        const QList<QAction *> actions = audio->actions();
        QCOMPARE(actions.size(), titles.size());
        for (QAction *action : actions) {
            const QString text = action->text();
            QVERIFY2(!text.contains(u'\t') && !text.contains(QChar(0x202E)), qPrintable(text));
            QVERIFY2(QString(text).replace(QStringLiteral("&&"), QStringLiteral("&")).size() <= 80,
                     qPrintable(text));
            // Any & is a doubled one: no track gives itself a shortcut.
            QVERIFY2(!QString(text).remove(QStringLiteral("&&")).contains(u'&'), qPrintable(text));
        }
        QVERIFY(actions.at(0)->text().contains(QStringLiteral("&&Quit")));
        QVERIFY(actions.at(1)->text().contains(QStringLiteral("Music Ctrl+Q")));
        QVERIFY(actions.at(2)->text().contains(QStringLiteral("Photo gnp.exe")));
        QVERIFY(actions.at(3)->text().contains(titles.at(3)));
        QVERIFY(actions.at(4)->text().endsWith(QChar(0x2026)));
        // One group of choices however often the menu is filled again.
        QCOMPARE(audio->findChildren<QActionGroup *>().size(), 1);
    }

    void theTrackMenusFollowTheItemsTracks()
    {
        QMenu *audio = submenu(QStringLiteral("Playback"), QStringLiteral("Audio Track"));
        QMenu *subtitles = submenu(QStringLiteral("Playback"), QStringLiteral("Subtitles"));
        QVERIFY(audio && subtitles);
        // Nothing plays: nothing to choose, and no button for it.
        QVERIFY(!audio->menuAction()->isEnabled());
        QVERIFY(!subtitles->menuAction()->isEnabled());
        QVERIFY(content()->controlBar()->tracksButton()->isHidden());

        player().setPresentationSize({640, 360});
        m_model->play(QUrl::fromLocalFile(QStringLiteral("/media/film.mkv")), std::nullopt, false);
        player().setTracks(filmTracks());
        QVERIFY(audio->menuAction()->isEnabled());
        QCOMPARE(texts(audio),
                 QStringList({QStringLiteral("✓English (AAC stereo)"),
                              QStringLiteral(" French \"Commentary\" (AAC stereo)")}));
        QCOMPARE(texts(subtitles),
                 QStringList({QStringLiteral("✓Off"), QStringLiteral(" English (SubRip)"),
                              QStringLiteral("---"), QStringLiteral(" Load Subtitle File…")}));
        QVERIFY(!content()->controlBar()->tracksButton()->isHidden());

        // A choice from the menu goes to the player and is said in a notice.
        audio->actions().at(1)->trigger();
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Audio: French"));
        QCOMPARE(texts(audio).at(1), QStringLiteral("✓French \"Commentary\" (AAC stereo)"));
        subtitles->actions().at(1)->trigger();
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Subtitles: English"));
        QCOMPARE(texts(subtitles).first(2),
                 QStringList({QStringLiteral(" Off"), QStringLiteral("✓English (SubRip)")}));
        // The control bar's button offers the same menus.
        const QList<QAction *> barMenus = content()->controlBar()->tracksMenu()->actions();
        QCOMPARE(barMenus.size(), 2);
        QCOMPARE(texts(barMenus.at(0)->menu()), texts(audio));
        QCOMPARE(texts(barMenus.at(1)->menu()), texts(subtitles));

        // One sound and no subtitles: no button; the subtitle menu still loads a file.
        player().setTracks({filmTracks().constFirst()});
        QVERIFY(content()->controlBar()->tracksButton()->isHidden());
        QCOMPARE(texts(subtitles), QStringList({QStringLiteral(" Load Subtitle File…")}));
        QVERIFY(subtitles->menuAction()->isEnabled());
        QVERIFY(subtitles->actions().constLast()->isEnabled());

        // Web content has no tracks of the player's.
        m_model->openRemote(QStringLiteral("https://www.youtube.com/watch?v=dQw4w9WgXcQ"),
                            std::nullopt);
        QVERIFY(!audio->menuAction()->isEnabled());
        QVERIFY(!subtitles->menuAction()->isEnabled());
    }

    void backToLiveLeavesTheArchiveForTheChannel()
    {
        QAction *live = menuAction(QStringLiteral("Playback"), QStringLiteral("Back to Live"));
        QVERIFY(live);
        QVERIFY(!live->isEnabled());
        LocalHttpServer server;
        QVERIFY(server.listen());
        server.route(QStringLiteral("/list.m3u"),
                     HttpResponse::text("#EXTM3U catchup=\"shift\"\n#EXTINF:-1,News\n"
                                        "http://127.0.0.1:9/news.m3u8\n#EXTINF:-1,Sport\n"
                                        "http://127.0.0.1:9/sport.m3u8\n"));
        m_model->openRemote(server.url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 2, 10000);
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        const PlaylistEntry news = m_model->playlist().first();
        QVERIFY(
            m_model->playArchive(news, {QStringLiteral("Late News"), now - 7200, now - 3600, {}}));
        QVERIFY(live->isEnabled());
        QCOMPARE(m_model->title(), QStringLiteral("News \u2014 Late News"));
        QVERIFY(player().items.constLast());
        QVERIFY(player().items.constLast()->toString().startsWith(
            QStringLiteral("http://127.0.0.1:9/news.m3u8?utc=%1&lutc=").arg(now - 7200)));
        QVERIFY(!m_model->isLiveStream());
        live->trigger();
        QVERIFY(!live->isEnabled());
        QCOMPARE(m_model->title(), QStringLiteral("News"));
        QCOMPARE(player().items.constLast(), QUrl(QStringLiteral("http://127.0.0.1:9/news.m3u8")));
        QVERIFY(m_model->isLiveStream());
        // Zapping from the archive goes to the next channel live.
        QVERIFY(
            m_model->playArchive(news, {QStringLiteral("Late News"), now - 7200, now - 3600, {}}));
        QTest::keyClick(m_window->windowHandle(), Qt::Key_PageDown);
        QTRY_COMPARE(m_model->title(), QStringLiteral("Sport"));
        QVERIFY(!live->isEnabled());
        QVERIFY(m_model->isLiveStream());
        // A programme beyond the archive window is refused with a notice.
        QVERIFY(!m_model->playArchive(
            news, {QStringLiteral("Old"), now - 9 * 86400, now - 9 * 86400 + 3600, {}}));
        QCOMPARE(m_model->title(), QStringLiteral("Sport"));
        QVERIFY(!m_model->toastMessage().isEmpty());
    }

    void thePageKeysAndTheMenuZapThroughTheChannels()
    {
        QAction *next = menuAction(QStringLiteral("Playback"), QStringLiteral("Next Channel"));
        QAction *previous
            = menuAction(QStringLiteral("Playback"), QStringLiteral("Previous Channel"));
        QVERIFY(next && previous);
        QVERIFY(!next->isEnabled() && !previous->isEnabled());
        LocalHttpServer server;
        QVERIFY(server.listen());
        loadPlaylist(server, 3);
        QVERIFY(next->isEnabled() && previous->isEnabled());
        // Whether the last item asked for is channel i's stream.
        const auto playing = [this](int i) {
            return !player().items.isEmpty()
                && player().items.constLast()
                == QUrl(QStringLiteral("http://127.0.0.1:9/%1.m3u8").arg(i));
        };
        // Nothing plays yet: Page Down starts at the first row, Page Up at the last.
        QTest::keyClick(m_window->windowHandle(), Qt::Key_PageDown);
        QTRY_VERIFY(playing(0));
        QCOMPARE(m_model->title(), QStringLiteral("Channel 0"));
        QTest::keyClick(m_window->windowHandle(), Qt::Key_PageUp);
        QTRY_VERIFY(playing(2));
        next->trigger();
        QTRY_VERIFY(playing(0));
        previous->trigger();
        QTRY_VERIFY(playing(2));
        QCOMPARE(content()->channelList()->listView()->currentIndex().row(), 2);
    }

    void aSubtitleFileDroppedOnAPlayingVideoJoinsIt()
    {
        const QPointF centre = QRectF(content()->rect()).center();
        const auto drop = [&](const QString &path) {
            QMimeData data;
            data.setUrls({QUrl::fromLocalFile(path)});
            // Qt hands a drop only to the widget that took the drag's entry.
            QDragEnterEvent enter(centre.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, {});
            QApplication::sendEvent(content(), &enter);
            QDropEvent event(centre, Qt::CopyAction, &data, Qt::LeftButton, {});
            QApplication::sendEvent(content(), &event);
        };
        // Nothing playing: a subtitle file is played as any file is.
        drop(QStringLiteral("/media/lonely.srt"));
        QCOMPARE(player().items.size(), 1);
        QVERIFY(player().subtitleFiles.isEmpty());

        player().setPresentationSize({640, 360});
        m_model->play(QUrl::fromLocalFile(QStringLiteral("/media/film.mkv")), std::nullopt, false);
        const qsizetype items = player().items.size();
        for (const char *name : {"a.srt", "b.ASS", "c.ssa", "d.vtt", "e.sub"})
            drop(QStringLiteral("/media/") + name);
        QCOMPARE(player().items.size(), items);
        QCOMPARE(player().subtitleFiles,
                 QStringList({"/media/a.srt", "/media/b.ASS", "/media/c.ssa", "/media/d.vtt",
                              "/media/e.sub"}));
        QCOMPARE(m_model->title(), QStringLiteral("film.mkv"));
        // Any other file replaces the video.
        drop(QStringLiteral("/media/next.mp4"));
        QCOMPARE(player().items.size(), items + 1);
        // Sound alone takes no subtitles: the file is played.
        player().setSoundOnly(SoundDescription {});
        drop(QStringLiteral("/media/song.srt"));
        QCOMPARE(player().items.size(), items + 2);
        QCOMPARE(player().subtitleFiles.size(), 5);
    }

    void aDropOfSeveralFilesPlaysTheFirst()
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QStringLiteral("/media/first clip.mp4")),
                      QUrl::fromLocalFile(QStringLiteral("/media/second.mp4"))});
        const QPointF centre = QRectF(content()->rect()).center();
        QDragEnterEvent enter(centre.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(content(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(centre, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(content(), &drop);
        QCOMPARE(player().items.size(), 1);
        QCOMPARE(player().items.constFirst(),
                 QUrl::fromLocalFile(QStringLiteral("/media/first clip.mp4")));
        QCOMPARE(m_model->title(), "first clip.mp4");
        QVERIFY(!m_model->isLiveStream());

        // Nothing usable: nothing happens.
        QMimeData web;
        web.setUrls({QUrl(QStringLiteral("https://example.com/a.mp4"))});
        QDropEvent webDrop(centre, Qt::CopyAction, &web, Qt::LeftButton, {});
        QApplication::sendEvent(content(), &webDrop);
        QMimeData text;
        text.setText(QStringLiteral("hello"));
        QDropEvent textDrop(centre, Qt::CopyAction, &text, Qt::LeftButton, {});
        QApplication::sendEvent(content(), &textDrop);
        QCOMPARE(player().items.size(), 1);
    }

    void anAddressFromTheCommandLineOpensInTheSidebarOnce()
    {
        content()->openAddress(QStringLiteral(" ") + liveAddress);
        QVERIFY(content()->showsSidebar());
        QCOMPARE(panel()->address(), liveAddress);
        QCOMPARE(player().items.size(), 1);
        QTest::qWait(NetworkPanel::automaticOpenDelayMs * 2);
        QCOMPARE(player().items.size(), 1);
        QCOMPARE(player().items.constFirst(), QUrl(liveAddress));
    }

    void theChannelSectionShowsOnlyWithAPlaylist()
    {
        LocalHttpServer server;
        QVERIFY(server.listen());
        content()->setShowSidebar(true);
        QVERIFY(!content()->channelList()->isVisible());
        loadPlaylist(server, 3);
        QVERIFY(content()->channelList()->isVisible());
        m_model->clearNetworkStream();
        QVERIFY(!content()->channelList()->isVisible());
    }

    void clearingEmptiesFieldsAndFiltersAndFocusesTheAddress()
    {
        LocalHttpServer server;
        QVERIFY(server.listen());
        content()->setShowSidebar(true);
        loadPlaylist(server, 5);
        ChannelList *channels = content()->channelList();
        channels->setSearch(QStringLiteral("channel 1"));
        channels->setCountryCode(QStringLiteral("FR"));
        channels->setCategory(QStringLiteral("News"));
        panel()->setShowMovieName(true);
        panel()->movieNameField()->setText(QStringLiteral("My list"));
        panel()->setAddress(server.url(QStringLiteral("/list.m3u")).toString());
        content()->controlBar()->setFocusPolicy(Qt::StrongFocus);
        content()->controlBar()->setFocus();

        QTest::mouseClick(panel()->clearButton(), Qt::LeftButton);
        QCOMPARE(panel()->address(), QString());
        QCOMPARE(panel()->movieName(), QString());
        QCOMPARE(channels->searchField()->text(), QString());
        QCOMPARE(channels->filter(), ChannelFilter());
        QVERIFY(m_model->playlist().isEmpty());
        QVERIFY(!m_model->lastPlayableSource().has_value());
        QVERIFY(panel()->isAddressFieldFocused());
        QVERIFY(!panel()->isAutomaticOpenPending());
    }

    void importingStartsTheFiltersAfresh()
    {
        LocalHttpServer server;
        QVERIFY(server.listen());
        loadPlaylist(server, 5);
        content()->channelList()->setSearch(QStringLiteral("4"));
        content()->channelList()->setCountryCode(QStringLiteral("FR"));
        int asked = 0;
        m_model->setFileChooser([&asked](const OpenPanelRequest &request) {
            ++asked;
            return request.title == "Import M3U Playlist" ? std::optional<QString>() : std::nullopt;
        });
        panel()->setAddress(QStringLiteral("kept"));
        QTest::mouseClick(panel()->importButton(), Qt::LeftButton);
        QCOMPARE(asked, 1);
        QCOMPARE(content()->channelList()->filter(), ChannelFilter());
        QCOMPARE(panel()->address(), "kept");
    }

    void aLongTitleIsCutInTheMiddle()
    {
        const QString name = QStringLiteral("The beginning of a very long file name")
            + QString(200, QLatin1Char('x')) + QStringLiteral(" and its end.mp4");
        m_model->play(QUrl::fromLocalFile(QStringLiteral("/media/") + name), std::nullopt, false);
        QTRY_VERIFY(m_window->windowTitle().contains(QChar(0x2026)));
        const QString title = m_window->windowTitle();
        QVERIFY(title.startsWith(QLatin1String("The beginning")));
        QVERIFY(title.endsWith(QLatin1String("end.mp4")));
        const QFontMetrics metrics(WindowTitleSetter::titleFont());
        QVERIFY(metrics.horizontalAdvance(title)
                <= m_window->width() - WindowTitleSetter::titleMargin);
        // A short title is whole.
        m_model->play(QUrl::fromLocalFile(QStringLiteral("/media/short.mp4")), std::nullopt, false);
        QTRY_COMPARE(m_window->windowTitle(), "short.mp4");
    }

    void theMenusFollowTheModel()
    {
        QAction *open = menuAction(QStringLiteral("File"), QString::fromUtf8("Open Media…"));
        QVERIFY(open);
        QCOMPARE(open->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));
        QStringList titles;
        for (QAction *top : m_window->menuBar()->actions())
            if (top->text() == "Playback")
                for (QAction *action : top->menu()->actions())
                    titles.append(action->isSeparator() ? QStringLiteral("-") : action->text());
        QCOMPARE(titles,
                 (QStringList {"Play", "Stop", "-", "Back 5 Seconds", "Forward 5 Seconds",
                               "Back 20 Seconds", "Forward 20 Seconds", "Back 60 Seconds",
                               "Forward 60 Seconds", "Mute", "-", "Next Channel\tPage Down",
                               "Previous Channel\tPage Up", "Back to Live", "Start Recording", "-",
                               "Audio Track", "Subtitles"}));
        // The page keys are the player's own: the items only show them.
        QVERIFY(menuAction(QStringLiteral("Playback"), QStringLiteral("Next Channel"))
                    ->shortcut()
                    .isEmpty());
        m_model->play(QUrl(QStringLiteral("file:///media/a.mp4")), std::nullopt, false);
        QVERIFY(menuAction(QStringLiteral("Playback"), QStringLiteral("Pause")));
        menuAction(QStringLiteral("Playback"), QStringLiteral("Pause"))->trigger();
        QVERIFY(!m_model->isPlaying());
        QVERIFY(menuAction(QStringLiteral("Playback"), QStringLiteral("Play")));

        player().setPosition(30);
        QTRY_COMPARE(m_model->currentTime(), 30.0);
        menuAction(QStringLiteral("Playback"), QStringLiteral("Back 20 Seconds"))->trigger();
        QCOMPARE(player().seeks.constLast(), 10.0);
        menuAction(QStringLiteral("Playback"), QStringLiteral("Forward 60 Seconds"))->trigger();
        QCOMPARE(player().seeks.constLast(), 70.0);

        QAction *mute = menuAction(QStringLiteral("Playback"), QStringLiteral("Mute"));
        QCOMPARE(mute->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_M));
        QTest::keyClick(m_window.get(), Qt::Key_M, Qt::ControlModifier);
        QVERIFY(m_model->isMuted());
        QCOMPARE(mute->text(), "Unmute");
        menuAction(QStringLiteral("Playback"), QStringLiteral("Stop"))->trigger();
        QCOMPARE(player().items.constLast(), std::nullopt);
    }

    void theViewMenuHoldsTheSidebarTheModesAndFullScreen()
    {
        QStringList menus;
        for (QAction *top : m_window->menuBar()->actions())
            menus.append(top->text().remove(u'&'));
        QCOMPARE(menus, (QStringList {"File", "Playback", "View", "Help"}));
        QStringList titles;
        QList<QKeySequence> keys;
        for (QAction *action : submenuOf(QStringLiteral("View"))->actions()) {
            titles.append(action->isSeparator() ? QStringLiteral("-") : action->text());
            keys.append(action->shortcut());
        }
        QCOMPARE(titles,
                 (QStringList {"Show Sidebar", "-", "Normal", "Portrait Fill",
                               QString::fromUtf8("Portrait Rotate 90°"), "Manual Reframe",
                               "Smart Reframe", "-", "Enter Full Screen\tF"}));
        QCOMPARE(keys.at(0), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L));
        for (int mode = 0; mode < 5; ++mode)
            QCOMPARE(keys.at(2 + mode), QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + mode)));
        QVERIFY(keys.at(8).isEmpty()); // F is the player's key
        QTest::keyClick(m_window.get(), Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(content()->showsSidebar());
        QVERIFY(menuAction(QStringLiteral("View"), QStringLiteral("Hide Sidebar")));
        QTest::keyClick(m_window.get(), Qt::Key_2, Qt::ControlModifier);
        QCOMPARE(content()->portraitMode(), PortraitDisplayMode::fill);
        QVERIFY(menuAction(QStringLiteral("View"), QStringLiteral("Portrait Fill"))->isChecked());
        QVERIFY(!menuAction(QStringLiteral("View"), QStringLiteral("Normal"))->isChecked());
        // The control bar's menu and the View menu agree.
        Q_EMIT content()->controlBar()->displayModeChosen(PortraitDisplayMode::smart);
        QVERIFY(menuAction(QStringLiteral("View"), QStringLiteral("Smart Reframe"))->isChecked());
        menuAction(QStringLiteral("View"), QStringLiteral("Normal"))->trigger();
        QCOMPARE(content()->portraitMode(), PortraitDisplayMode::normal);
        menuAction(QStringLiteral("View"), QStringLiteral("Hide Sidebar"))->trigger();
        QVERIFY(!content()->showsSidebar());
    }

    void theRecordingItemFollowsTheRecorder()
    {
        RecordingRecorder recorder;
        content()->setRecorder(&recorder);
        QAction *record = menuAction(QStringLiteral("Playback"), QStringLiteral("Start Recording"));
        QVERIFY(record);
        QCOMPARE(record->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_R));
        QVERIFY(record->isEnabled());
        QTest::keyClick(m_window.get(), Qt::Key_R, Qt::ControlModifier);
        QCOMPARE(recorder.starts, QList<PlayerRecordingQuality> {PlayerRecordingQuality::normal});
        recorder.setState(PlayerRecordingState::preparing);
        QVERIFY(!record->isEnabled());
        recorder.setState(PlayerRecordingState::recording);
        QCOMPARE(record->text(), "Stop Recording");
        QVERIFY(record->isEnabled());
        record->trigger();
        QCOMPARE(recorder.stops, 1);
        recorder.setState(PlayerRecordingState::stopping);
        QVERIFY(!record->isEnabled());
        recorder.setState(PlayerRecordingState::idle);
        QCOMPARE(record->text(), "Start Recording");
        QVERIFY(record->isEnabled());
        content()->setRecorder(content()->recordingController());
    }

    void aboutNamesTheVersionTheLibrariesAndTheModelLicences()
    {
        QAction *about
            = menuAction(QStringLiteral("Help"), QStringLiteral("About LumoMediaPlayerPro"));
        QVERIFY(about);
        about->trigger();
        QMessageBox *box = nullptr;
        QTRY_VERIFY((box = m_window->findChild<QMessageBox *>(QStringLiteral("aboutBox")))
                    && box->isVisible());
        QCOMPARE(box->windowTitle(), "About LumoMediaPlayerPro");
        const QString text = box->text();
        for (const char *part : {"LumoMediaPlayerPro", "Qt 6.", "libmpv", "FFmpeg ", "OpenCV 4.",
                                 "Apache License 2.0", "Haar cascade"})
            QVERIFY2(text.contains(QLatin1String(part)), part);
        box->close();
    }

    void openMediaWorksWhileAPlaylistLoads()
    {
        LocalHttpServer server;
        QVERIFY(server.listen());
        server.hold(QRegularExpression(QStringLiteral("^/slow.m3u$")));
        QStringList titles;
        m_model->setFileChooser([&titles](const OpenPanelRequest &request) {
            titles.append(request.title);
            return std::optional<QString>();
        });
        m_model->openRemote(server.url(QStringLiteral("/slow.m3u")).toString(), std::nullopt);
        QVERIFY(m_model->isLoading());
        QTest::keyClick(m_window.get(), Qt::Key_O, Qt::ControlModifier);
        QCOMPARE(titles.size(), 1);
    }

    void theNoticeSlidesInAtTheTopAndLeavesByItself()
    {
        ToastOverlay *toast = content()->toast();
        QVERIFY(!toast->isVisible());
        m_model->showToast(QStringLiteral("Nothing to replay"));
        QVERIFY(toast->isVisible());
        QCOMPARE(toast->message(), "Nothing to replay");
        QVERIFY(toast->y() < ToastOverlay::inset);
        QTRY_VERIFY(toast->y() > 0);
        QTest::qWait(ToastOverlay::animationMs * 2);
        const int centre = toast->geometry().center().x();
        QVERIFY(qAbs(centre - content()->width() / 2) <= 1);
        QVERIFY(toast->height() >= ToastOverlay::minimumHeight);
        QTRY_VERIFY_WITH_TIMEOUT(!toast->isVisible(), PlayerModel::toastDurationMs + 2000);
    }

    void aNoticeStaysInThePlayerAreaBesideTheSidebar()
    {
        ToastOverlay *toast = content()->toast();
        resizeContent({780, 430});
        content()->setShowSidebar(true);
        QTRY_COMPARE(content()->sidebar()->x(), 0);
        QTest::qWait(ContentView::sidebarAnimationMs + 100);
        const QString longName = QStringLiteral("Could not play A Documentary About The Longest "
                                                "Rivers Of The World Part Two, Recorded In Full.");
        m_model->showToast(longName, QStringLiteral("The server answered 404 Not Found."));
        QTest::qWait(ToastOverlay::animationMs * 2);
        // Wrapped to the player area's width, centred on it, at its top.
        const QRect player = content()->surface()->geometry();
        QVERIFY2(toast->geometry().left() >= player.left(),
                 qPrintable(QStringLiteral("notice from %1, player area from %2")
                                .arg(toast->geometry().left())
                                .arg(player.left())));
        QVERIFY(toast->geometry().right() <= player.right());
        QVERIFY(qAbs(toast->geometry().center().x() - player.center().x()) <= 1);
        QVERIFY(toast->shownLines().size() >= 2);
        QVERIFY(toast->y() >= player.top());
        TestDesktop::saveScreenshot(*m_window, QStringLiteral("notice-beside-sidebar"));
    }

    void theVolumeShowsOverThePictureForASecond()
    {
        VolumeIndicator *level = content()->volumeIndicator();
        QVERIFY(!level->isVisible());
        m_model->showToast(QStringLiteral("Audio: French"));
        // The keys, then the mute button.
        QTest::keyClick(m_window->windowHandle(), Qt::Key_Down);
        QTRY_VERIFY(level->isVisible());
        QCOMPARE(level->text(), QStringLiteral("Volume 95 %"));
        QTest::keyClick(m_window->windowHandle(), Qt::Key_M);
        QCOMPARE(level->text(), QStringLiteral("Muted"));
        for (ControlButton *button : content()->controlBar()->findChildren<ControlButton *>())
            if (button->toolTip() == QStringLiteral("Mute or unmute"))
                QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(level->text(), QStringLiteral("Volume 95 %"));
        // Apart from the notice, which stays.
        QCOMPARE(m_model->toastMessage(), QStringLiteral("Audio: French"));
        QVERIFY(content()->surface()->geometry().contains(level->geometry()));
        QVERIFY(!level->geometry().intersects(content()->toast()->geometry()));
        TestDesktop::saveScreenshot(*m_window, QStringLiteral("volume-level-over-picture"));
        QTRY_VERIFY_WITH_TIMEOUT(!level->isVisible(), VolumeIndicator::shownMs + 500);
        // Rounded to the nearest per cent.
        QCOMPARE(VolumeIndicator::levelText(0.456, false), QStringLiteral("Volume 46 %"));
        QCOMPARE(VolumeIndicator::levelText(0.454, false), QStringLiteral("Volume 45 %"));
        QCOMPARE(VolumeIndicator::levelText(0.3, true), QStringLiteral("Muted"));
    }

    void theNoticeGrowsToItsTextAndWrapsWhenTheWindowIsNarrow()
    {
        ToastOverlay *toast = content()->toast();
        resizeContent({700, 430});
        // A short notice is shown whole, on one line.
        m_model->showToast(QStringLiteral("Could not play fake.mp4."));
        QTRY_COMPARE(toast->shownLines(), QStringList {"Could not play fake.mp4."});
        const QString longName = QStringLiteral("Could not play A Documentary About The Longest "
                                                "Rivers Of The World Part Two.mp4.");
        m_model->showToast(longName);
        QTRY_COMPARE(toast->message(), longName);
        QCOMPARE(toast->shownLines().join(u' '), longName);
        // Narrow: two whole lines, within the window.
        resizeContent({520, 430});
        m_model->showToast(QStringLiteral("Could not play") + u' ' + longName);
        QTRY_COMPARE(toast->shownLines().size(), 2);
        QCOMPARE(toast->shownLines().join(u' '), QStringLiteral("Could not play ") + longName);
        QVERIFY(toast->geometry().right() <= content()->width());
        QVERIFY(toast->geometry().left() >= 0);
        // A name too long for three lines is cut there with an ellipsis.
        const QString huge
            = QStringLiteral("Could not play ") + QString(300, u'x') + QStringLiteral(".mp4.");
        m_model->showToast(huge);
        QTRY_COMPARE(toast->message(), huge);
        QCOMPARE(toast->shownLines().size(), ToastOverlay::maxTextLines);
        QVERIFY(toast->shownLines().constLast().endsWith(QChar(0x2026)));
        QVERIFY(toast->shownLines().constFirst().startsWith(u"Could not play"));
    }

    void aFailureNoticeSaysWhyInASmallerSecondLine()
    {
        ToastOverlay *toast = content()->toast();
        resizeContent({700, 430});
        m_model->showToast(QStringLiteral("Could not play Dead Channel."));
        QTRY_COMPARE(toast->message(), QStringLiteral("Could not play Dead Channel."));
        const int plainHeight = toast->height();
        QVERIFY(toast->shownDetailLines().isEmpty());
        // The same notice again with its reason is shown anew, one line taller.
        m_model->showToast(QStringLiteral("Could not play Dead Channel."),
                           QStringLiteral("The server answered 404 Not Found."));
        QTRY_COMPARE(toast->detail(), QStringLiteral("The server answered 404 Not Found."));
        QCOMPARE(toast->shownLines(), QStringList {"Could not play Dead Channel."});
        QCOMPARE(toast->shownDetailLines(), QStringList {"The server answered 404 Not Found."});
        QVERIFY(toast->detailFont().pixelSize() < toast->font().pixelSize());
        QVERIFY(toast->height() > plainHeight);
        QTest::qWait(ToastOverlay::animationMs + 100);
        const QImage shot = m_window->grab().toImage();
        const QString folder
            = QDir(QCoreApplication::applicationDirPath()).absoluteFilePath("../screenshots");
        QDir().mkpath(folder);
        shot.save(QDir(folder).filePath(QStringLiteral("notice-with-reason.png")));
        // A notice without a reason drops the earlier one's.
        m_model->showToast(QStringLiteral("No media or URL is available."));
        QTRY_VERIFY(toast->shownDetailLines().isEmpty());
        QCOMPARE(toast->detail(), QString());
    }
};

QTEST_MAIN(TestPlayerWindow)
#include "tst_playerwindow.moc"
