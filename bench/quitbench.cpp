// How long the real program takes to end once asked to quit (through its MPRIS Quit, as a desktop
// would): while a file plays, and with a channel list and its programme guide loaded.
#include "benchreport.h"
#include "eventloopwait.h"
#include "privatesessionbus.h"
#include "syntheticguide.h"
#include "testmedia.h"

#include "httpserver/localhttpserver.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <vector>

namespace {

constexpr int runs = 5;
const QString service = QStringLiteral("org.mpris.MediaPlayer2.LumoMediaPlayer");
const QString objectPath = QStringLiteral("/org/mpris/MediaPlayer2");

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? qQNaN() : values[values.size() / 2];
}

QString playbackStatus()
{
    QDBusMessage get = QDBusMessage::createMethodCall(
        service, objectPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    get << QStringLiteral("org.mpris.MediaPlayer2.Player") << QStringLiteral("PlaybackStatus");
    const QDBusMessage reply = QDBusConnection::sessionBus().call(get, QDBus::Block, 2000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant().toString();
}

// Starts the program on address, waits until ready() holds, asks it to quit and returns how long
// it took to end; nothing when it did not get there.
std::optional<double> quitTime(const QString &address, const std::function<bool()> &ready)
{
    QTemporaryDir runtime;
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QCoreApplication::applicationDirPath() + QStringLiteral("/LumoMediaPlayer"),
                  {address});
    if (!program.waitForStarted())
        return std::nullopt;
    const auto registered = [] {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(service).value();
    };
    if (!waitUntil(registered, 30'000) || !waitUntil(ready, 60'000)) {
        program.kill();
        program.waitForFinished();
        return std::nullopt;
    }
    // A moment of ordinary use before the user quits.
    waitUntil([] { return false; }, 1000);
    QElapsedTimer clock;
    clock.start();
    QDBusConnection::sessionBus().asyncCall(QDBusMessage::createMethodCall(
        service, objectPath, QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Quit")));
    if (!waitUntil([&] { return program.state() == QProcess::NotRunning; }, 30'000)) {
        program.kill();
        program.waitForFinished();
        return std::nullopt;
    }
    const double ms = clock.nsecsElapsed() / 1e6;
    // The name is free before the next launch.
    waitUntil([&] { return !registered(); }, 5000);
    return program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0
        ? std::optional<double>(ms)
        : std::nullopt;
}

} // namespace

int main(int argc, char *argv[])
{
    PrivateSessionBus bus;
    QApplication application(argc, argv);
    BenchReport report(QStringLiteral("quit"));
    if (bus.address().isEmpty()) {
        std::fputs("lumo-bench-quit: dbus-daemon did not start\n", stderr);
        return 1;
    }

    QTemporaryDir media;
    const QString clip = media.filePath(QStringLiteral("clip.mp4"));
    const QString guideFile = media.filePath(QStringLiteral("guide.xml"));
    SyntheticGuide guide;
    guide.channels = 2000;
    guide.days = 2;
    guide.firstDay = QDateTime::currentSecsSinceEpoch() / 86400 * 86400 - 86400;
    QFile guideBytes(guideFile);
    if (!TestMedia::makeClip(clip, 60) || !writeSyntheticGuide(guideFile, guide)
        || !guideBytes.open(QIODevice::ReadOnly)) {
        std::fputs("lumo-bench-quit: the media could not be made\n", stderr);
        return 1;
    }
    LocalHttpServer server;
    server.route(QStringLiteral("/guide.xml"),
                 HttpResponse::text(guideBytes.readAll(), "application/xml"));
    if (!server.listen()) {
        std::fputs("lumo-bench-quit: the local server could not listen\n", stderr);
        return 1;
    }
    server.route(QStringLiteral("/channels.m3u"),
                 HttpResponse::text(
                     syntheticGuidePlaylist(guide.channels, 1,
                                            server.url(QStringLiteral("/guide.xml")).toString()),
                     "audio/x-mpegurl"));

    std::vector<double> playing;
    std::vector<double> listed;
    for (int run = 0; run < runs; ++run) {
        if (const std::optional<double> ms
            = quitTime(clip, [] { return playbackStatus() == u"Playing"; }))
            playing.push_back(*ms);
        const int guides = server.requestCount(QStringLiteral("/guide.xml"));
        if (const std::optional<double> ms
            = quitTime(server.url(QStringLiteral("/channels.m3u")).toString(),
                       [&] { return server.requestCount(QStringLiteral("/guide.xml")) > guides; }))
            listed.push_back(*ms);
    }
    report.add(QStringLiteral("quit_while_playing_ms"), median(playing), QStringLiteral("ms"));
    report.add(QStringLiteral("quit_with_channel_list_and_guide_ms"), median(listed),
               QStringLiteral("ms"));
    report.add(
        QStringLiteral("quit_worst_ms"),
        std::max(playing.empty() ? qQNaN() : *std::max_element(playing.begin(), playing.end()),
                 listed.empty() ? qQNaN() : *std::max_element(listed.begin(), listed.end())),
        QStringLiteral("ms"));
    report.note(QStringLiteral("from the MPRIS Quit call to the end of the process; median of %1 "
                               "launches each (a 60 s clip playing; 2,000 channels and a two-day "
                               "guide loaded from a local server)")
                    .arg(runs));
    const QString json = jsonPathFromArguments(argc, argv);
    if (!json.isEmpty() && !report.write(json))
        return 1;
    return playing.empty() || listed.empty() ? 1 : 0;
}
