// The playlist loader when a file read never ends, as on a stalled network mount: later loads
// go on, and quitting does not wait for the read. A stalled mount cannot be made here on
// demand, so the read is a stand-in that blocks until the test lets it go.
#include "httpserver/localhttpserver.h"
#include "model/playlistloader.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

namespace {

// A read that blocks until released.
struct StalledRead
{
    std::mutex mutex;
    std::condition_variable changed;
    bool started = false;
    bool released = false;

    PlaylistLoadResult read()
    {
        std::unique_lock lock(mutex);
        started = true;
        changed.notify_all();
        changed.wait(lock, [this] { return released; });
        return PlaylistLoadResult::failure(QStringLiteral("released"));
    }
    bool hasStarted()
    {
        const std::lock_guard lock(mutex);
        return started;
    }
    bool isReleased()
    {
        const std::lock_guard lock(mutex);
        return released;
    }
    void release()
    {
        const std::lock_guard lock(mutex);
        released = true;
        changed.notify_all();
    }
};

bool writeChannels(const QString &path, int count)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QByteArray text = "#EXTM3U\n";
    for (int i = 0; i < count; ++i) {
        text += "#EXTINF:-1 tvg-id=\"ch" + QByteArray::number(i) + ".us\" group-title=\"Group "
            + QByteArray::number(i % 50) + "\",Channel " + QByteArray::number(i)
            + "\nhttp://stream.example.com/live/" + QByteArray::number(i) + ".ts\n";
    }
    return file.write(text) == text.size();
}

} // namespace

class TestPlaylistLoader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStalledReadHoldsUpNeitherLoadsNorQuitting()
    {
        LocalHttpServer server;
        server.route(QStringLiteral("/list.m3u"),
                     HttpResponse::text("#EXTM3U\n#EXTINF:-1,One\nhttp://127.0.0.1:9/1.ts\n"));
        QVERIFY(server.listen());

        auto stall = std::make_shared<StalledRead>();
        auto loader = std::make_unique<PlaylistLoader>(
            [stall](const QString &, qint64, const std::stop_token &) { return stall->read(); });
        QObject context;
        int fileResults = 0;
        loader->loadFile(QStringLiteral("/mnt/stalled/list.m3u"), maxPlaylistBytes, &context,
                         [&fileResults](const PlaylistLoadResult &) { ++fileResults; });
        QTRY_VERIFY(stall->hasStarted());

        QList<PlaylistEntry> downloaded;
        loader->load(
            server.url(QStringLiteral("/list.m3u")), PlaylistDownloadLimits(), &context,
            [&downloaded](const PlaylistLoadResult &result) { downloaded = result.entries; });
        QTRY_COMPARE_WITH_TIMEOUT(downloaded.size(), 1, 5000);

        // Let the read go only long after quitting should have ended; a loader that waited
        // for it would end only then.
        std::thread releaser([stall] {
            std::this_thread::sleep_for(std::chrono::seconds(5));
            stall->release();
        });
        loader.reset();
        const bool releasedBeforeQuitEnded = stall->isReleased();
        releaser.join();
        QVERIFY(!releasedBeforeQuitEnded);
        // The read's late result goes nowhere.
        QTest::qWait(300);
        QCOMPARE(fileResults, 0);
    }

    void quittingLetsWorkAboutToEndFinish()
    {
        // A parse of a large list ends within a second; cut off by the process ending it
        // could crash on the way out, so quitting gives it that second.
        auto finished = std::make_shared<std::atomic<bool>>(false);
        auto loader = std::make_unique<PlaylistLoader>(
            [finished](const QString &, qint64, const std::stop_token &) {
                std::this_thread::sleep_for(std::chrono::milliseconds(300));
                finished->store(true);
                return PlaylistLoadResult {};
            });
        QObject context;
        int results = 0;
        loader->loadFile(QStringLiteral("/tmp/list.m3u"), maxPlaylistBytes, &context,
                         [&results](const PlaylistLoadResult &) { ++results; });
        loader.reset();
        QVERIFY(finished->load());
        QTest::qWait(100);
        QCOMPARE(results, 0);
    }

    void quittingStopsAParseUnderWay()
    {
        // A parse that went on after quitting would race the static destructors: a loader that
        // goes tells it to stop, and it has ended once the loader is gone.
        QTemporaryDir folder;
        QVERIFY(folder.isValid());
        const QString path = folder.filePath(QStringLiteral("large.m3u"));
        QVERIFY(writeChannels(path, 200'000));
        auto outcome = std::make_shared<std::optional<PlaylistLoadResult>>();
        auto reading = std::make_shared<std::atomic<bool>>(false);
        auto loader = std::make_unique<PlaylistLoader>(
            [outcome, reading](const QString &file, qint64 maxBytes, const std::stop_token &stop) {
                reading->store(true);
                // Quitting begins while the list is being read.
                for (int waited = 0; !stop.stop_requested() && waited < 10'000; ++waited)
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                PlaylistLoadResult result = loadPlaylistFile(file, maxBytes, stop);
                *outcome = result;
                return result;
            });
        QObject context;
        int results = 0;
        loader->loadFile(path, maxPlaylistBytes, &context,
                         [&results](const PlaylistLoadResult &) { ++results; });
        QTRY_VERIFY(reading->load());
        loader.reset();
        QCOMPARE(PlaylistLoader::unfinishedWork(), 0);
        QVERIFY(outcome->has_value());
        QCOMPARE((*outcome)->error, playlistLoadStoppedDescription());
        QVERIFY(!(*outcome)->index);
        QTest::qWait(100);
        QCOMPARE(results, 0);
    }

    void readingAndParsingYieldToTheInterface()
    {
        // On two cores a 50 MB list would otherwise take the CPU from drawing and typing. The
        // suite may itself run under nice: everything is relative to where it started.
        const auto interfaceThread = static_cast<id_t>(gettid());
        errno = 0;
        const int started = getpriority(PRIO_PROCESS, interfaceThread);
        QCOMPARE(errno, 0);
        auto nice = std::make_shared<std::atomic<int>>(-100);
        PlaylistLoader loader([nice](const QString &, qint64, const std::stop_token &) {
            errno = 0;
            nice->store(getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())));
            return PlaylistLoadResult {};
        });
        QObject context;
        bool done = false;
        loader.loadFile(QStringLiteral("/tmp/list.m3u"), maxPlaylistBytes, &context,
                        [&done](const PlaylistLoadResult &) { done = true; });
        QTRY_VERIFY(done);
        QCOMPARE(nice->load(), PlaylistLoader::backgroundNice(started));
        QVERIFY(nice->load() > started || started == 19);
        // The interface thread keeps its own priority.
        QCOMPARE(getpriority(PRIO_PROCESS, interfaceThread), started);
    }

    void theLoaderStaysBehindAPlayerStartedWithNice()
    {
        QCOMPARE(PlaylistLoader::backgroundNice(0), 10);
        QCOMPARE(PlaylistLoader::backgroundNice(5), 15);
        QCOMPARE(PlaylistLoader::backgroundNice(15), 19);
        QCOMPARE(PlaylistLoader::backgroundNice(19), 19);
        QCOMPARE(PlaylistLoader::backgroundNice(-5), 5);
    }

    void aLoadedPlaylistComesWithItsSearchIndex()
    {
        // Folding 200,000 names for the search takes the interface thread over 100 ms; the
        // loader does it with the parse.
        QTemporaryDir folder;
        QVERIFY(folder.isValid());
        QFile file(folder.filePath(QStringLiteral("list.m3u")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#EXTM3U\n"
                   "#EXTINF:-1 tvg-country=\"us\" group-title=\"News\",CNN\nhttp://a/1\n"
                   "#EXTINF:-1 tvg-country=\"DE\" group-title=\"Sport\",Sport 1\nhttp://a/2\n"
                   "#EXTINF:-1,No Country\nhttp://a/3\n");
        file.close();
        PlaylistLoader loader;
        QObject context;
        std::optional<PlaylistLoadResult> result;
        loader.loadFile(file.fileName(), maxPlaylistBytes, &context,
                        [&result](const PlaylistLoadResult &r) { result = r; });
        QTRY_VERIFY(result.has_value());
        QVERIFY(result->error.isNull());
        QCOMPARE(result->entries.size(), 3);
        QVERIFY(result->index);
        QCOMPARE(result->index->playlist(), result->entries);
        QCOMPARE(result->index->countryCodes(),
                 (QStringList {QStringLiteral("DE"), QStringLiteral("US")}));
        QCOMPARE(result->index->categories(),
                 (QStringList {QStringLiteral("News"), QStringLiteral("Sport")}));
        ChannelFilter sport;
        sport.search = QStringLiteral("SPORT");
        QCOMPARE(result->index->filter(sport), std::vector<int> {1});
    }

    void aFailedLoadHasNoIndex()
    {
        PlaylistLoader loader;
        QObject context;
        std::optional<PlaylistLoadResult> result;
        loader.loadFile(QStringLiteral("/nonexistent/list.m3u"), maxPlaylistBytes, &context,
                        [&result](const PlaylistLoadResult &r) { result = r; });
        QTRY_VERIFY(result.has_value());
        QVERIFY(!result->error.isNull());
        QVERIFY(!result->index);
    }
};

QTEST_GUILESS_MAIN(TestPlaylistLoader)
#include "tst_playlistloader.moc"
