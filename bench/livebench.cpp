// Live channels against a local server: how soon a channel whose server came back plays again,
// how soon a dead channel is given up, and how soon Page Down shows the next channel. The
// channels are live HLS windows sliding over one-second segments; figures are medians.
// Options: --outages N (default 5), --outage-seconds S (default 25), --json PATH.
#include "benchreport.h"
#include "eventloopwait.h"

#include "httpserver/localhttpserver.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "testmedia.h"
#include "ui/channellist.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTcpServer>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr int segmentCount = 900;

double median(QList<double> values)
{
    if (values.isEmpty())
        return qQNaN();
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

int option(int argc, char *argv[], const char *name, int fallback)
{
    for (int i = 1; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], name) == 0)
            return std::atoi(argv[i + 1]);
    return fallback;
}

// The live server: an index per channel sliding with the clock, over the same segments.
class LiveServer
{
public:
    LiveServer(QString folder, QElapsedTimer &clock)
        : m_folder(std::move(folder))
        , m_clock(clock)
    { }

    bool start(quint16 port = 0)
    {
        m_server = std::make_unique<LocalHttpServer>();
        m_server->serveDirectory(m_folder);
        for (const QString &path : {QStringLiteral("/one.m3u8"), QStringLiteral("/two.m3u8")})
            m_server->route(path, [this](const HttpRequest &) {
                return HttpResponse::text(TestMedia::liveIndex(m_clock.elapsed(), segmentCount),
                                          "application/vnd.apple.mpegurl");
            });
        m_server->route(QStringLiteral("/gone.m3u8"), HttpResponse::notFound());
        HttpResponse silence;
        silence.neverAnswer = true;
        m_server->route(QStringLiteral("/silent.m3u8"), silence);
        return m_server->listen(port);
    }
    void stop() { m_server.reset(); }
    QUrl url(const QString &path) const { return m_server->url(path); }
    quint16 port() const { return m_server->port(); }

private:
    QString m_folder;
    QElapsedTimer &m_clock;
    std::unique_ptr<LocalHttpServer> m_server;
};

// Waits until the model's item moves forward by a second; false on time-out.
bool moves(const PlayerModel &model, int timeoutMs)
{
    double seen = -1;
    return waitUntil(
        [&] {
            const double now = model.currentTime();
            if (!model.isPlaying() || now <= 0 || model.isBuffering())
                return false;
            if (seen < 0 || now < seen)
                seen = now;
            return now > seen + 0.1;
        },
        timeoutMs);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    BenchReport report(QStringLiteral("live"));
    const int outages = option(argc, argv, "--outages", 5);
    const int outageSeconds = option(argc, argv, "--outage-seconds", 25);
    QTemporaryDir folder;
    if (!folder.isValid() || !TestMedia::makeSegments(folder.path(), segmentCount)) {
        report.note(QStringLiteral("ffmpeg could not make the segments"));
        return 1;
    }
    QElapsedTimer clock;
    clock.start();
    LiveServer server(folder.path(), clock);
    if (!server.start()) {
        report.note(QStringLiteral("the local server does not listen"));
        return 1;
    }
    const quint16 port = server.port();

    // A channel whose server goes away for a while and comes back on the same port.
    {
        PlayerModel model(std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        model.play(server.url(QStringLiteral("/one.m3u8")), QStringLiteral("One"), true);
        QList<double> backAfter;
        for (int outage = 0; outage < outages; ++outage) {
            if (!moves(model, 30000))
                break;
            server.stop();
            waitUntil([] { return false; }, outageSeconds * 1000);
            server.start(port);
            QElapsedTimer since;
            since.start();
            if (!moves(model, 60000)) {
                std::printf("outage %d: the channel did not come back\n", outage + 1);
                break;
            }
            backAfter.append(since.elapsed() / 1000.0);
            std::printf("outage %d of %d s: moving again %.2f s after the server returned\n",
                        outage + 1, outageSeconds, backAfter.constLast());
        }
        report.add(QStringLiteral("recoveryAfterServerReturnSecondsMedian"), median(backAfter),
                   QStringLiteral("s"));
    }

    // Dead channels: from the click to the notice.
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        const QUrl refused(QStringLiteral("http://127.0.0.1:%1/dead.m3u8").arg(probe.serverPort()));
        probe.close();
        const QList<std::pair<QString, QUrl>> dead {
            {QStringLiteral("refused"), refused},
            {QStringLiteral("404"), server.url(QStringLiteral("/gone.m3u8"))},
            {QStringLiteral("noAnswer"), server.url(QStringLiteral("/silent.m3u8"))},
        };
        for (const auto &[name, url] : dead) {
            PlayerModel model(std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
            QElapsedTimer since;
            since.start();
            model.play(url, QStringLiteral("Dead"), true);
            const bool noticed = waitUntil(
                [&] { return model.toastMessage().startsWith(u"Could not play"); }, 60000);
            const double seconds = noticed ? since.elapsed() / 1000.0 : qQNaN();
            report.add(QStringLiteral("deadChannelNoticeSeconds.") + name, seconds,
                       QStringLiteral("s"));
        }
    }

    // Page Down in a list of two channels: from the press to the next channel moving.
    {
        const QByteArray playlist = "#EXTM3U\n#EXTINF:-1,One\n"
            + server.url(QStringLiteral("/one.m3u8")).toEncoded() + "\n#EXTINF:-1,Two\n"
            + server.url(QStringLiteral("/two.m3u8")).toEncoded() + "\n";
        QTemporaryDir lists;
        QFile file(lists.filePath(QStringLiteral("two.m3u")));
        file.open(QIODevice::WriteOnly);
        file.write(playlist);
        file.close();
        PlayerModel model(std::make_unique<MpvPlayer>(MpvPlayer::VideoOutput::none));
        model.setFileChooser(
            [&](const OpenPanelRequest &) -> std::optional<QString> { return file.fileName(); });
        ChannelList channels(model);
        model.importLocalM3U(std::nullopt);
        waitUntil([&] { return model.playlist().size() == 2; }, 10000);
        QList<double> zaps;
        for (int press = 0; press < 5 && model.playlist().size() == 2; ++press) {
            if (press == 0) {
                model.playChannel(model.playlist().at(0));
                moves(model, 30000);
            }
            QElapsedTimer since;
            since.start();
            channels.stepChannel(1);
            waitUntil([&] { return model.currentTime() == 0; }, 2000);
            if (!moves(model, 30000))
                break;
            zaps.append(since.elapsed() / 1000.0);
        }
        report.note(QStringLiteral("Page Down includes the 0.3 s wait for a further press"));
        report.add(QStringLiteral("pageDownToNextChannelMovingSecondsMedian"), median(zaps),
                   QStringLiteral("s"));
    }

    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json))
        return 1;
    return 0;
}
