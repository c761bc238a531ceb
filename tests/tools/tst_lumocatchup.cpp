// lumo-cli catchup: the archive address of a programme of a playlist's channel, with the
// playlist's defaults, the entry's tvg-shift and the local time zone TZ names.
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Result
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Result runCatchup(const QStringList &arguments, const QByteArray &zone = "UTC")
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"TZ"_s, QString::fromLatin1(zone));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(LUMO_CLI_PATH), QStringList {u"catchup"_s} + arguments);
    if (!process.waitForFinished(60000))
        qFatal("lumo-cli catchup did not finish");
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

const QByteArray playlist = "#EXTM3U catchup=\"xc\" catchup-days=\"3\"\n"
                            "#EXTINF:-1 tvg-id=\"one\",One\n"
                            "http://xc.example:8000/live/user/pass/101.ts\n"
                            "#EXTINF:-1 catchup=\"flussonic\" tvg-shift=\"-1\",Two\n"
                            "https://fs.example/two/index.m3u8?token=t\n"
                            "#EXTINF:-1 catchup=\"append\" catchup-source=\"&from={utc}\",Three\n"
                            "streams/three.m3u8?k=1\n"
                            "#EXTINF:-1 catchup=\"later\",Four\n"
                            "http://tv.example/four\n"
                            "#EXTINF:-1 catchup=\"default\" catchup-source=\"file:///etc/{utc}\","
                            "Five\nhttp://tv.example/five\n";

QStringList programme(int channel)
{
    return {
        u"--channel"_s, QString::number(channel),  u"--start"_s, u"2026-11-25T20:00:00Z"_s,
        u"--stop"_s,    u"2026-11-25T21:30:00Z"_s, u"--now"_s,   u"2026-11-25T23:00:00+01:00"_s};
}

} // namespace

class TestLumoCatchup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_path = m_dir.filePath(u"list.m3u"_s);
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(playlist), playlist.size());
    }

    void printsTheArchiveAddress()
    {
        const Result xc = runCatchup(QStringList {m_path} + programme(1));
        QCOMPARE(xc.exitCode, 0);
        QCOMPARE(xc.out, "http://xc.example:8000/timeshift/user/pass/90/2026-11-25:20-00/101.ts\n");
        QVERIFY(xc.err.isEmpty());

        // tvg-shift of -1 hour: the server's start is an hour later; now is 22:00 UTC.
        const Result flussonic = runCatchup(QStringList {m_path} + programme(2));
        QCOMPARE(flussonic.exitCode, 0);
        QCOMPARE(flussonic.out, "https://fs.example/two/timeshift_rel-3600.m3u8?token=t\n");
    }

    void theLocalFieldsFollowTz()
    {
        const Result berlin = runCatchup(QStringList {m_path} + programme(1), "Europe/Berlin");
        QCOMPARE(berlin.exitCode, 0);
        QCOMPARE(berlin.out,
                 "http://xc.example:8000/timeshift/user/pass/90/2026-11-25:21-00/101.ts\n");
    }

    void relativeAddressesFollowTheBase()
    {
        const Result result
            = runCatchup(QStringList {m_path} + programme(3)
                         + QStringList {u"--base"_s, u"http://lists.example/tv/"_s});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, "http://lists.example/tv/streams/three.m3u8?k=1&from=1795636800\n");
    }

    void aChannelWithoutArchiveSaysSo()
    {
        for (const int channel : {4, 5}) {
            const Result result = runCatchup(QStringList {m_path} + programme(channel));
            QCOMPARE(result.exitCode, 1);
            QVERIFY(result.out.isEmpty());
            QCOMPARE(result.err, "This channel has no archive.\n");
        }
        // A playlist read from a file names a local file for its third channel: as from the
        // network, an archive is never a file.
        const Result local = runCatchup(QStringList {m_path} + programme(3));
        QCOMPARE(local.exitCode, 1);
        QCOMPARE(local.err, "This channel has no archive.\n");
    }

    void badArgumentsAreRefused()
    {
        QCOMPARE(runCatchup({m_path, u"--channel"_s, u"1"_s}).exitCode, 2);
        QStringList noZone = QStringList {m_path} + programme(1);
        noZone[4] = u"2026-11-25T20:00:00"_s;
        const Result zoneless = runCatchup(noZone);
        QCOMPARE(zoneless.exitCode, 2);
        QVERIFY(zoneless.err.contains("--start"));
        QStringList beyond = QStringList {m_path} + programme(1);
        beyond[2] = u"9"_s;
        QCOMPARE(runCatchup(beyond).exitCode, 2);
        QCOMPARE(runCatchup(QStringList {m_dir.filePath(u"missing.m3u"_s)} + programme(1)).exitCode,
                 1);
    }

private:
    QTemporaryDir m_dir;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestLumoCatchup)
#include "tst_lumocatchup.moc"
