#include "app/launchrequest.h"

#include <QTest>

class TestLaunchRequest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pathsAreFiles()
    {
        const QDir here(QStringLiteral("/home/user/videos"));
        QVERIFY(launchRequest(QStringLiteral("clip.mp4"), here)
                == LaunchRequest(
                    LaunchFile {QUrl::fromLocalFile(QStringLiteral("/home/user/videos/clip.mp4")),
                                QStringLiteral("clip.mp4")}));
        QVERIFY(launchRequest(QStringLiteral("/tmp/a b.mkv"), here)
                == LaunchRequest(LaunchFile {QUrl::fromLocalFile(QStringLiteral("/tmp/a b.mkv")),
                                             QStringLiteral("a b.mkv")}));
        QVERIFY(launchRequest(QStringLiteral("file:///tmp/x%20y.mp4"), here)
                == LaunchRequest(LaunchFile {QUrl::fromLocalFile(QStringLiteral("/tmp/x y.mp4")),
                                             QStringLiteral("x y.mp4")}));
    }

    void addressesAreOpenedAsTyped()
    {
        const QDir here(QStringLiteral("/tmp"));
        for (const QString &text :
             {QStringLiteral("http://example.com/live.m3u8"), QStringLiteral("https://youtu.be/x"),
              QStringLiteral("<https://example.com/a.m3u>"),
              QStringLiteral("[News](http://example.com/n.m3u8)"),
              QStringLiteral("ftp://example.com/x")})
            QVERIFY(launchRequest(text, here) == LaunchRequest(LaunchAddress {text}));
    }
};

QTEST_GUILESS_MAIN(TestLaunchRequest)
#include "tst_launchrequest.moc"
