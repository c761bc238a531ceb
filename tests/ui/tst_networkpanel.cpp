// The sidebar's network panel driven with the keyboard and mouse: automatic opening after
// typing stops, pasting, Play and Return, the name field and the play button's label.
#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "ui/nametoggle.h"
#include "ui/networkpanel.h"
#include "windowactivation.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEnterEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

namespace {

const QString liveAddress = QStringLiteral("http://127.0.0.1:9/live/index.m3u8");

} // namespace

class TestNetworkPanel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<NetworkPanel> m_panel;

    ScriptedMediaPlayer &player() { return static_cast<ScriptedMediaPlayer &>(m_model->player()); }
    QList<QUrl> opened()
    {
        QList<QUrl> urls;
        for (const std::optional<QUrl> &item : player().items)
            if (item)
                urls.append(*item);
        return urls;
    }

private Q_SLOTS:
    void init()
    {
        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_panel = std::make_unique<NetworkPanel>(*m_model);
        m_panel->resize(245, 200);
        m_panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_panel.get()));
        // No window manager activates windows under the test display.
        QVERIFY(WindowActivation::activate(m_panel.get()));
    }

    void cleanup()
    {
        m_panel.reset();
        m_model.reset();
    }

    void theFieldsAndButtonsSayWhatTheyDo()
    {
        QCOMPARE(m_panel->addressField()->placeholderText(), "Supports YouTube, .m3u8 and .m3u");
        QCOMPARE(m_panel->movieNameField()->placeholderText(), "Movie or Playlist Name (optional)");
        QCOMPARE(m_panel->importButton()->text(), "Local M3U");
        QCOMPARE(m_panel->importButton()->toolTip(), "Import a local M3U playlist");
        QCOMPARE(m_panel->playButton()->text(), "Play");
        QCOMPARE(m_panel->playButton()->toolTip(), "Open the stream manually");
        QCOMPARE(m_panel->importButton()->height(), 18);
        QCOMPARE(m_panel->playButton()->height(), 18);
        QCOMPARE(m_panel->nameToggle()->size(), QSize(27, 21));
    }

    void typingOpensOnceWhenTheKeysStop()
    {
        QLineEdit *field = m_panel->addressField();
        field->setFocus();
        QElapsedTimer sinceLastKey;
        for (QChar c : liveAddress) {
            QTest::keyClick(field, c.toLatin1());
            sinceLastKey.start();
            // Faster than the wait: every prefix that parses is replaced before it opens.
            QTest::qWait(15);
            QVERIFY(opened().isEmpty());
        }
        QCOMPARE(field->text(), liveAddress);
        QVERIFY(m_panel->isAutomaticOpenPending());
        QTRY_COMPARE_WITH_TIMEOUT(opened().size(), 1, 3000);
        QVERIFY(sinceLastKey.elapsed() >= NetworkPanel::automaticOpenDelayMs);
        QCOMPARE(opened().constFirst(), QUrl(liveAddress));
        QTest::qWait(NetworkPanel::automaticOpenDelayMs * 2);
        QCOMPARE(opened().size(), 1);
        QVERIFY(m_model->isLiveStream());
    }

    void aPastedAddressBrokenOverLinesIsJoinedAndOpened()
    {
        const QString pasted = QStringLiteral("  http://127.0.0.1:9/li\r\nve/index.m3u8\r\n");
        m_panel->addressField()->setText(pasted);
        QCOMPARE(m_panel->address(), liveAddress);
        QTRY_COMPARE_WITH_TIMEOUT(opened().size(), 1, 3000);
        QCOMPARE(opened().constFirst(), QUrl(liveAddress));
    }

    void otherSchemesNeverOpenByThemselves()
    {
        m_panel->setAddress(QStringLiteral("ftp://127.0.0.1:9/live/index.m3u8"));
        QVERIFY(!m_panel->isAutomaticOpenPending());
        QTest::qWait(NetworkPanel::automaticOpenDelayMs * 2);
        QVERIFY(opened().isEmpty());
        QVERIFY(m_model->errorMessage().isNull());
        // Play passes it on, and the model says what is wrong.
        QTest::mouseClick(m_panel->playButton(), Qt::LeftButton);
        QCOMPARE(m_model->errorMessage(), "Enter a valid HTTP or HTTPS address.");
    }

    void playDuringTheWaitOpensOnce()
    {
        m_panel->setAddress(liveAddress);
        QVERIFY(m_panel->isAutomaticOpenPending());
        QTest::mouseClick(m_panel->playButton(), Qt::LeftButton);
        QCOMPARE(opened().size(), 1);
        QVERIFY(!m_panel->isAutomaticOpenPending());
        QTest::qWait(NetworkPanel::automaticOpenDelayMs * 2);
        QCOMPARE(opened().size(), 1);
    }

    void returnOpensAtOnce()
    {
        m_panel->setAddress(liveAddress);
        QTest::keyClick(m_panel->addressField(), Qt::Key_Return);
        QCOMPARE(opened().size(), 1);
        QTest::qWait(NetworkPanel::automaticOpenDelayMs * 2);
        QCOMPARE(opened().size(), 1);
    }

    void anAddressChangedDuringTheWaitIsNotOpened()
    {
        m_panel->setAddress(liveAddress);
        QTest::qWait(NetworkPanel::automaticOpenDelayMs / 2);
        m_panel->setAddress(QStringLiteral("not an address"));
        QVERIFY(!m_panel->isAutomaticOpenPending());
        QTest::qWait(NetworkPanel::automaticOpenDelayMs * 2);
        QVERIFY(opened().isEmpty());
    }

    void emptyingTheFieldForgetsTheLastRemoteSource()
    {
        m_panel->setAddress(liveAddress);
        QTest::keyClick(m_panel->addressField(), Qt::Key_Return);
        QVERIFY(m_model->lastPlayableSource().has_value());
        m_panel->addressField()->selectAll();
        QTest::keyClick(m_panel->addressField(), Qt::Key_Backspace);
        QCOMPARE(m_panel->address(), QString());
        QVERIFY(!m_model->lastPlayableSource().has_value());
    }

    void theNameToggleShowsTheNameFieldAndSaysSo()
    {
        NameToggle *toggle = m_panel->nameToggle();
        QCOMPARE(toggle->toolTip(), "Add an optional movie or playlist name");
        QVERIFY(!m_panel->movieNameField()->isVisible());
        QTest::mouseClick(toggle, Qt::LeftButton);
        QVERIFY(m_panel->showsMovieName());
        QVERIFY(m_panel->movieNameField()->isVisible());
        QCOMPARE(toggle->toolTip(), "Hide movie or playlist name");
        QTest::mouseClick(toggle, Qt::LeftButton);
        QVERIFY(!m_panel->movieNameField()->isVisible());

        // The pointer over the toggle deepens its tint.
        const QImage plain = toggle->grab().toImage();
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), toggle->mapToGlobal(QPointF(5, 5)));
        QApplication::sendEvent(toggle, &enter);
        QVERIFY(m_panel->isMovieNameToggleHovered());
        QVERIFY(toggle->grab().toImage() != plain);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(toggle, &leave);
        QVERIFY(!m_panel->isMovieNameToggleHovered());
        QCOMPARE(toggle->grab().toImage(), plain);
    }

    void theNameTitlesTheStreamAndTheOpenedOne()
    {
        m_panel->setShowMovieName(true);
        m_panel->movieNameField()->setText(QStringLiteral("Evening News"));
        m_panel->setAddress(liveAddress);
        QTest::keyClick(m_panel->addressField(), Qt::Key_Return);
        QCOMPARE(m_model->title(), "Evening News");
        // Renaming a live stream as the name is typed.
        QTest::keyClicks(m_panel->movieNameField(), QStringLiteral(" 2"));
        QCOMPARE(m_model->title(), "Evening News 2");
        QTest::keyClick(m_panel->movieNameField(), Qt::Key_Return);
        QCOMPARE(m_model->title(), "Evening News 2");
        // A blank name leaves the stream its own title.
        m_panel->movieNameField()->setText(QStringLiteral("  "));
        QTest::keyClick(m_panel->addressField(), Qt::Key_Return);
        QCOMPARE(m_model->title(), "index.m3u8");
    }

    void thePlayButtonSaysLoadingWhileAPlaylistLoads()
    {
        LocalHttpServer server;
        QVERIFY(server.listen());
        server.hold(QRegularExpression(QStringLiteral("^/slow.m3u$")));
        m_panel->setAddress(server.url(QStringLiteral("/slow.m3u")).toString());
        QTest::keyClick(m_panel->addressField(), Qt::Key_Return);
        QVERIFY(m_model->isLoading());
        QCOMPARE(m_panel->playButton()->text(), "Loading");
        m_panel->clearNetworkStream();
        QCOMPARE(m_panel->playButton()->text(), "Play");
        QCOMPARE(m_panel->address(), QString());
        QVERIFY(m_panel->isAddressFieldFocused());
    }

    void theLastErrorShowsUnderTheButtons()
    {
        m_panel->setAddress(QStringLiteral("nonsense"));
        QTest::keyClick(m_panel->addressField(), Qt::Key_Return);
        bool shown = false;
        for (QLabel *label : m_panel->findChildren<QLabel *>())
            shown |= label->isVisible() && label->text() == "Enter a valid HTTP or HTTPS address.";
        QVERIFY(shown);
    }
};

QTEST_MAIN(TestNetworkPanel)
#include "tst_networkpanel.moc"
