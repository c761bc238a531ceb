// A live channel loaded again and again, as a stalled one is, in the whole player with sound and
// picture: what every reconnect leaves behind goes back to the system, so that a channel that
// reconnects all evening does not grow without end.
#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "residentmemory.h"
#include "testmedia.h"
#include "ui/playerwindow.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestReconnectMemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reconnectsLeaveNothingBehind()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("live.ts"));
        QVERIFY(TestMedia::makeTransportStream(path, 20));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        LocalHttpServer server;
        QVERIFY(server.listen());
        server.route(QStringLiteral("/live.ts"), [bytes](const HttpRequest &) {
            HttpResponse response;
            response.body = bytes;
            response.contentType = "video/mp2t";
            response.bytesPerSecond = 400'000;
            return response;
        });
        PlayerModel model(std::make_unique<MpvPlayer>());
        PlayerWindow window(model);
        window.show();
        model.play(server.url(QStringLiteral("/live.ts")), QStringLiteral("Live"), true);
        QTRY_VERIFY_WITH_TIMEOUT(model.currentTime() > 0.5, 15000);
        double afterTen = 0;
        for (int i = 1; i <= 40; ++i) {
            model.player().reloadCurrentItem();
            QTest::qWait(700);
            if (i == 10)
                afterTen = residentMegabytes();
        }
        QVERIFY(model.player().hasItem());
        const double growth = residentMegabytes() - afterTen;
        qInfo("resident memory after 10 reconnects %.1f MB, grown %.1f MB over 30 more", afterTen,
              growth);
        QVERIFY2(growth < 20, qPrintable(QString::number(growth)));
    }
};

QTEST_MAIN(TestReconnectMemory)
#include "tst_reconnectmemory.moc"
