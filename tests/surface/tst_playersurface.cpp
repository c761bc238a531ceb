#include "scriptedmediaplayer.h"
#include "testmedia.h"

#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "surface/playerhostingview.h"
#include "surface/playerrecordingsurface.h"
#include "surface/playersurface.h"
#include "surface/playersurfaceregistry.h"
#include "surface/webplayerview.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {
// Stands in for the web player's view, which registers itself while it is shown.
class WebViewStandIn final : public WebPlayerView, public PlayerRecordingSurface
{
public:
    explicit WebViewStandIn(QWidget *parent)
        : WebPlayerView(parent)
    {
        PlayerSurfaceRegistry::shared().setSurface(this);
    }
    ~WebViewStandIn() override { PlayerSurfaceRegistry::shared().clearIfHolding(this); }

    void updateContent(const YouTubeContent &content) override { contents.append(content); }
    QWidget *recordingView() override { return this; }
    QRectF recordingRectInView() const override { return QRectF(rect()); }
    void setPictureReceiver(PictureReceiver) override { }

    QList<YouTubeContent> contents;
};

const QString youtubeAddress = QStringLiteral("https://www.youtube.com/watch?v=dQw4w9WgXcQ");
} // namespace

// Counts the paint events of the object it filters.
class PaintCounter final : public QObject
{
public:
    explicit PaintCounter(int &paints)
        : m_paints(paints)
    { }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++m_paints;
        return false;
    }

private:
    int &m_paints;
};

class TestPlayerSurface : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PlayerModel> m_model;
    ScriptedMediaPlayer *m_player = nullptr;

    PlayerSurfaceRegistry &registry() { return PlayerSurfaceRegistry::shared(); }

private Q_SLOTS:
    void init()
    {
        auto player = std::make_unique<ScriptedMediaPlayer>();
        m_player = player.get();
        m_model = std::make_unique<PlayerModel>(std::move(player));
    }
    void cleanup()
    {
        m_model.reset();
        registry().setSurface(nullptr);
    }

    void theLastViewRegisteredIsTheSurface()
    {
        PlayerHostingView first;
        PlayerHostingView second;
        registry().setSurface(&first);
        QCOMPARE(registry().surface(), &first);
        registry().setSurface(&second);
        QCOMPARE(registry().surface(), &second);
        QCOMPARE(registry().surface()->recordingView(), &second);
    }

    void takingDownAnOlderViewLeavesTheRegistrationAlone()
    {
        PlayerHostingView older;
        PlayerHostingView newer;
        registry().setSurface(&older);
        registry().setSurface(&newer);
        registry().clearIfHolding(&older);
        QCOMPARE(registry().surface(), &newer);
        registry().clearIfHolding(&newer);
        QCOMPARE(registry().surface(), nullptr);
    }

    void aViewThatGoesAwayEmptiesTheRegistryByItself()
    {
        auto view = std::make_unique<PlayerHostingView>();
        registry().setSurface(view.get());
        QVERIFY(registry().surface());
        view.reset();
        QCOMPARE(registry().surface(), nullptr);
    }

    void hostingViewRecordsItsCropInPortraitModes()
    {
        PlayerHostingView view;
        view.resize(1000, 600);
        QCOMPARE(view.recordingRectInView(), QRectF(0, 0, 1000, 600));
        view.setDisplayMode(PortraitDisplayMode::smart);
        QCOMPARE(view.recordingRectInView(), QRectF(331.25, 0, 337.5, 600));
    }

    void theSurfaceRegistersItsVideoView()
    {
        PlayerSurface surface(*m_model);
        QCOMPARE(registry().surface(), surface.hostingView());
        surface.setPortraitMode(PortraitDisplayMode::manual);
        QCOMPARE(surface.hostingView()->displayMode(), PortraitDisplayMode::manual);
        surface.setFullScreen(true);
        QVERIFY(surface.hostingView()->fillScreen());
        // Every update registers the view again.
        registry().setSurface(nullptr);
        surface.setPortraitMode(PortraitDisplayMode::fill);
        QCOMPARE(registry().surface(), surface.hostingView());
    }

    void switchingBetweenWebAndVideoMovesTheRegistration()
    {
        PlayerSurface surface(*m_model);
        WebViewStandIn *web = nullptr;
        surface.setWebPlayerViewFactory([&](QWidget *parent) {
            web = new WebViewStandIn(parent);
            return web;
        });
        m_model->openRemote(youtubeAddress, std::nullopt);
        QVERIFY(surface.showsWebPlayer());
        QVERIFY(web);
        QCOMPARE(registry().surface(), web);
        QVERIFY(surface.hostingView()->isHidden());
        QCOMPARE(web->contents.size(), 1);
        QCOMPARE(web->contents.last().videoID(), QStringLiteral("dQw4w9WgXcQ"));

        // Other web content goes to the same view, which decides whether to reload.
        WebViewStandIn *first = web;
        m_model->openRemote(QStringLiteral("https://youtu.be/other?list=PLx"), std::nullopt);
        QCOMPARE(web, first);
        QVERIFY(web->contents.size() >= 2);
        QCOMPARE(web->contents.last().id(), QStringLiteral("other|PLx"));

        m_model->play(QUrl::fromLocalFile("/media/clip.mp4"), std::nullopt, false);
        QVERIFY(!surface.showsWebPlayer());
        QCOMPARE(registry().surface(), surface.hostingView());
        QVERIFY(!surface.hostingView()->isHidden());
    }

    void webContentWithoutAWebViewUnregistersTheVideoView()
    {
        PlayerSurface surface(*m_model);
        m_model->openRemote(youtubeAddress, std::nullopt);
        QCOMPARE(registry().surface(), nullptr);
    }

    void emptyStateShowsOnlyWithoutAnyItem()
    {
        PlayerSurface surface(*m_model);
        QVERIFY(surface.showsEmptyState());
        auto *button = surface.findChild<QPushButton *>("emptyState");
        QVERIFY(button);
        QCOMPARE(button->toolTip(), "Open Media");
        QStringList texts;
        for (QLabel *label : button->findChildren<QLabel *>())
            texts << label->text();
        QVERIFY(texts.contains("Click to open media"));
        QVERIFY(texts.contains("or drop a video or audio file here"));

        m_model->play(QUrl::fromLocalFile("/media/clip.mp4"), std::nullopt, false);
        QVERIFY(!surface.showsEmptyState());
        m_model->stop();
        QVERIFY(surface.showsEmptyState());
        // Web content never shows it.
        m_model->openRemote(youtubeAddress, std::nullopt);
        QVERIFY(!m_player->hasItem());
        QVERIFY(!surface.showsEmptyState());
    }

    void aNewTitleLeavesTheInvitationAsItWas()
    {
        PlayerSurface surface(*m_model);
        surface.resize(640, 360);
        surface.show();
        QVERIFY(QTest::qWaitForWindowExposed(&surface));
        auto *button = surface.findChild<QPushButton *>("emptyState");
        QVERIFY(button && button->isVisible());
        QTest::qWait(200);
        int paints = 0;
        PaintCounter counter(paints);
        button->installEventFilter(&counter);
        // What a playlist's arrival tells the surface, with nothing playing: the invitation
        // covers the whole picture, and drawing it again costs the window's largest area.
        Q_EMIT m_model->titleChanged();
        Q_EMIT m_model->isBufferingChanged();
        QTest::qWait(200);
        QCOMPARE(paints, 0);
        QVERIFY(button->isVisible());
        // A real change is still drawn.
        button->update();
        QTRY_VERIFY(paints > 0);
    }

    void theVideoViewIsLeftOutWhileTheInvitationShows()
    {
        // With mpv, whose view gets its OpenGL ready first.
        QTemporaryDir dir;
        const QString clip = dir.filePath(QStringLiteral("clip.mp4"));
        QVERIFY(TestMedia::makeClip(clip, 10));
        PlayerModel model(std::make_unique<MpvPlayer>());
        PlayerSurface surface(model);
        surface.resize(640, 360);
        surface.show();
        QVERIFY(QTest::qWaitForWindowExposed(&surface));
        PlayerHostingView *view = surface.hostingView();
        QTRY_VERIFY(view->isReady());
        QVERIFY(surface.showsEmptyState());
        QTRY_VERIFY(view->isHidden());

        // Something plays: the view is back at once and draws its pictures.
        QSignalSpy drawn(view, &PlayerHostingView::frameDrawn);
        model.play(QUrl::fromLocalFile(clip), std::nullopt, false);
        QVERIFY(!view->isHidden());
        QVERIFY(!surface.showsEmptyState());
        QTRY_VERIFY_WITH_TIMEOUT(drawn.count() > 0, 10000);
        QVERIFY(view->isVisible());

        model.stop();
        QVERIFY(surface.showsEmptyState());
        QVERIFY(view->isHidden());
    }

    void theInvitationStaysAwayWhileALiveItemReconnects()
    {
        PlayerSurface surface(*m_model);
        m_model->play(QUrl("http://127.0.0.1:9/live/index.m3u8"), std::nullopt, true);
        m_player->setPosition(1);
        QTest::qWait(1200); // it has played
        // The server goes: the item ends and the tries begin.
        m_player->replaceCurrentItem(std::nullopt);
        Q_EMIT m_player->endReached();
        QVERIFY(m_model->isBuffering());
        QVERIFY(surface.showsBuffering());
        QVERIFY(!surface.showsEmptyState());
        QTest::qWait(300);
        QVERIFY(!surface.showsEmptyState());
    }

    void bufferingShowsOnlyForALiveStream()
    {
        PlayerSurface surface(*m_model);
        m_model->play(QUrl("http://127.0.0.1:9/live/index.m3u8"), std::nullopt, true);
        m_player->setWaiting(true);
        QTRY_VERIFY(m_model->isBuffering());
        QVERIFY(surface.showsBuffering());
        QVERIFY(surface.findChild<QWidget *>("buffering")->findChild<QLabel *>()->text()
                == "Buffering…");
        m_player->setWaiting(false);
        QVERIFY(!surface.showsBuffering());

        // A file that stalls shows nothing.
        m_model->play(QUrl("http://127.0.0.1:9/movie.mp4"), std::nullopt, false);
        m_player->setWaiting(true);
        QTest::qWait(700);
        QVERIFY(!surface.showsBuffering());
    }

    void soundWithoutAPictureShowsItsTagsOverTheOldFrame()
    {
        PlayerSurface surface(*m_model);
        surface.resize(640, 360);
        surface.show();
        QVERIFY(QTest::qWaitForWindowExposed(&surface));
        m_model->play(QUrl(QStringLiteral("file:///media/night-drive.mp3")), std::nullopt, false);
        QVERIFY(!surface.showsSoundOnly());
        m_player->setSoundOnly(SoundDescription {"Night Drive", "The Testers", "Loopback"});
        QVERIFY(surface.showsSoundOnly());
        QCOMPARE(surface.soundOnlyText(), QString::fromUtf8("Night Drive\nThe Testers — Loopback"));
        // It covers the whole picture, so that no earlier frame shows around it.
        QCOMPARE(surface.findChild<QWidget *>("soundOnly")->geometry(), surface.rect());
        const QString folder
            = QDir(QCoreApplication::applicationDirPath()).absoluteFilePath("../screenshots");
        QDir().mkpath(folder);
        surface.grab().save(QDir(folder).filePath(QStringLiteral("sound-only.png")));
        // Untagged: the title the player gives it.
        m_player->setSoundOnly(SoundDescription {});
        QCOMPARE(surface.soundOnlyText(), QStringLiteral("night-drive.mp3\n"));
        m_player->setSoundOnly(std::nullopt);
        QVERIFY(!surface.showsSoundOnly());
    }
};

QTEST_MAIN(TestPlayerSurface)
#include "tst_playersurface.moc"
