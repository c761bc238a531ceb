// The reason given under "Could not play …", read from what mpv reported while it tried: the
// messages below are mpv's and FFmpeg's own wording.
#include "model/playbackfailure.h"

#include <QTest>

class TestPlaybackFailure : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyTheFailedLoadsMessagesCount()
    {
        // The list's entries failed one after the other; the last one was refused.
        const QStringList messages {"HTTP error 404 Not Found",
                                    "Failed to open http://127.0.0.1:8000/one.ts.",
                                    "Connection to tcp://127.0.0.1:9 failed: Connection refused",
                                    "Failed to open http://127.0.0.1:9/two.ts."};
        QCOMPARE(PlaybackFailure::reason(
                     PlaybackFailure::ownMessages(messages, "http://127.0.0.1:9/two.ts"), true),
                 "The server refused the connection.");
        // A file imported with no server at all says nothing of an earlier item's server.
        const QStringList late {"HTTP error 404 Not Found",
                                "Failed to open http://127.0.0.1:8000/earlier.mp4.",
                                "Failed to recognize file format."};
        QCOMPARE(
            PlaybackFailure::reason(PlaybackFailure::ownMessages(late, "/media/ar.m3u"), false),
            "This is not a media file the player can read.");
        // Nothing of another load: all of them count.
        QCOMPARE(PlaybackFailure::ownMessages(messages.mid(2), "http://127.0.0.1:9/two.ts"),
                 messages.mid(2));
    }

    void reasons_data()
    {
        QTest::addColumn<QStringList>("messages");
        QTest::addColumn<bool>("network");
        QTest::addColumn<QString>("reason");

        QTest::newRow("missing file")
            << QStringList {"Cannot open file '/media/gone.mp4': No such file or directory",
                            "Failed to open /media/gone.mp4."}
            << false << "The file was not found.";
        QTest::newRow("unreadable file")
            << QStringList {"Cannot open file '/media/locked.mp4': Permission denied",
                            "Failed to open /media/locked.mp4."}
            << false << "The file cannot be read: permission denied.";
        QTest::newRow("no media") << QStringList {"Failed to recognize file format."} << false
                                  << "This is not a media file the player can read.";
        QTest::newRow("404") << QStringList {"HTTP error 404 Not Found",
                                             "Failed to open http://127.0.0.1:8000/x.mp4."}
                             << true << "The server answered 404 Not Found.";
        QTest::newRow("403") << QStringList {"HTTP error 403 Forbidden"} << true
                             << "The server answered 403 Forbidden.";
        QTest::newRow("503 after a retry")
            << QStringList {"Will reconnect at 0 in 0 second(s), error=Server returned 5XX.",
                            "HTTP error 503 Service Unavailable"}
            << true << "The server answered 503 Service Unavailable.";
        QTest::newRow("status without a phrase")
            << QStringList {"HTTP error 599"} << true << "The server answered 599.";
        QTest::newRow("refused")
            << QStringList {"Connection to tcp://127.0.0.1:9 failed: Connection refused",
                            "Failed to open http://127.0.0.1:9/x.mp4."}
            << true << "The server refused the connection.";
        QTest::newRow("unknown host")
            << QStringList {"Failed to resolve hostname nowhere.invalid: Name or service not known"}
            << true << "The server's name was not found.";
        QTest::newRow("silent server") << QStringList {"Failed to open http://127.0.0.1:8000/x."}
                                       << true << "The server did not answer.";
        QTest::newRow("timed out")
            << QStringList {"Connection to tcp://10.0.0.1:80 failed: Connection timed out"} << true
            << "The server did not answer.";
        // A status wins over the summary mpv writes after it, whatever the order.
        QTest::newRow("status after other lines")
            << QStringList {"Failed to open http://127.0.0.1:8000/x.", "HTTP error 404 Not Found"}
            << true << "The server answered 404 Not Found.";
        QTest::newRow("nothing known")
            << QStringList {"Failed to open /media/odd.mp4."} << false << QString();
        QTest::newRow("no messages") << QStringList {} << true << QString();
        QTest::newRow("a stream broken off")
            << QStringList {"Invalid NAL unit size (1 > 0).", "Error splitting the input."} << true
            << QString();
    }

    void reasons()
    {
        QFETCH(QStringList, messages);
        QFETCH(bool, network);
        QFETCH(QString, reason);
        QCOMPARE(PlaybackFailure::reason(messages, network), reason);
    }
};

QTEST_GUILESS_MAIN(TestPlaybackFailure)
#include "tst_playbackfailure.moc"
