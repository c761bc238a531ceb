// The Debian package, for real: made with CPack from this build, unpacked into a scratch root,
// its desktop files validated, and the program it holds started on a clip under the test's X
// server until the picture appears.
#include "testmedia.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {

// Runs program to its end; empty when it succeeded, otherwise what it said.
QString run(const QString &program, const QStringList &arguments, int timeoutMs = 300'000)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(timeoutMs))
        return program + " did not finish";
    const QString output = QString::fromUtf8(process.readAll());
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return program + " failed: " + output.right(2000);
    return {};
}

// What appstreamcli validate said about a file, one "LEVEL tag" per issue ("W
// url-homepage-missing").
QStringList appstreamIssues(const QString &metainfo)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start("appstreamcli", {"validate", "--no-net", metainfo});
    if (!process.waitForFinished(60'000))
        return {"appstreamcli did not finish"};
    const QString output = QString::fromUtf8(process.readAll());
    // "W: org.example.App:12: tag-name" (the position may be "~")
    static const QRegularExpression issue(QStringLiteral("^([EW]): [^:]+:[^:]*: (\\S+)"),
                                          QRegularExpression::MultilineOption);
    QStringList issues;
    for (auto it = issue.globalMatch(output); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        issues.append(match.captured(1) + u' ' + match.captured(2));
    }
    if (issues.isEmpty()
        && (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0))
        issues.append("appstreamcli failed: " + output.right(2000));
    return issues;
}

} // namespace

class TestPackage : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_work;
    QString m_root;

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *tool : {"cpack", "dpkg-deb", "desktop-file-validate", "appstreamcli"})
            QVERIFY2(!QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty(),
                     qPrintable(QStringLiteral("%1 is missing: run ./lumo setup").arg(tool)));
    }

    void thePackageIsMadeAndUnpacks()
    {
        const QString packages = m_work.filePath("packages");
        const QString made = run("cpack",
                                 {"-G", "DEB", "-B", packages, "--config",
                                  QStringLiteral(LUMO_BUILD_DIR "/CPackConfig.cmake")});
        QVERIFY2(made.isEmpty(), qPrintable(made));
        const QStringList debs = QDir(packages).entryList({"*.deb"}, QDir::Files);
        QCOMPARE(debs.size(), 1);
        const QString deb = QDir(packages).filePath(debs.constFirst());

        QProcess fields;
        fields.start("dpkg-deb", {"--field", deb, "Package", "Depends"});
        QVERIFY(fields.waitForFinished(30'000));
        const QString control = QString::fromUtf8(fields.readAll());
        QVERIFY2(control.contains("Package: lumomediaplayer"), qPrintable(control));
        // The libraries the programs link are what the package needs.
        for (const char *library : {"libmpv", "libqt6webengine", "libpulse", "libavcodec"})
            QVERIFY2(control.contains(QLatin1String(library)), qPrintable(control));

        m_root = m_work.filePath("root");
        const QString unpacked = run("dpkg-deb", {"-x", deb, m_root});
        QVERIFY2(unpacked.isEmpty(), qPrintable(unpacked));
        for (const char *file :
             {"usr/bin/LumoMediaPlayer", "usr/bin/lumo-cli",
              "usr/libexec/LumoMediaPlayer/lumo-cli-faces",
              "usr/share/applications/LumoMediaPlayer.desktop",
              "usr/share/icons/hicolor/scalable/apps/LumoMediaPlayer.svg",
              "usr/share/metainfo/org.lumomediaplayer.LumoMediaPlayer.metainfo.xml"})
            QVERIFY2(QFileInfo::exists(QDir(m_root).filePath(QString::fromLatin1(file))), file);
    }

    void itsDesktopFilesValidate()
    {
        QVERIFY(!m_root.isEmpty());
        const QString entry = run("desktop-file-validate",
                                  {m_root + "/usr/share/applications/LumoMediaPlayer.desktop"});
        QVERIFY2(entry.isEmpty(), qPrintable(entry));
        QStringList issues = appstreamIssues(
            m_root + "/usr/share/metainfo/org.lumomediaplayer.LumoMediaPlayer.metainfo.xml");
        // The player has no web site to name; appstream 1.0 warns about that, and about nothing
        // else.
        issues.removeOne(QStringLiteral("W url-homepage-missing"));
        QVERIFY2(issues.isEmpty(), qPrintable(issues.join(u'\n')));
    }

    void theInstalledToolLooksForFaces()
    {
        QVERIFY(!m_root.isEmpty());
        const QString picture = m_work.filePath("grey.png");
        QImage grey(320, 240, QImage::Format_RGB32);
        grey.fill(Qt::gray);
        QVERIFY(grey.save(picture));
        QProcess tool;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("LUMO_FACE_MODELS");
        tool.setProcessEnvironment(environment);
        tool.start(m_root + "/usr/bin/lumo-cli", {"faces", picture});
        QVERIFY(tool.waitForFinished(120'000));
        const QByteArray errors = tool.readAllStandardError();
        QVERIFY2(tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0,
                 errors.constData());
        const QByteArray line = tool.readAllStandardOutput();
        QVERIFY2(line.startsWith("{\"image\":") && line.contains("\"faces\":[]"), line.constData());
    }

    void theInstalledProgramPlaysAFile()
    {
        QVERIFY(!m_root.isEmpty());
        const QString clip = m_work.filePath("clip.mp4");
        QVERIFY(TestMedia::makeClip(clip, 20));
        QTemporaryDir runtime;
        QProcess player;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_RUNTIME_DIR", runtime.path());
        environment.insert("LUMO_DEBUG", "1");
        player.setProcessEnvironment(environment);
        player.setProcessChannelMode(QProcess::MergedChannels);
        player.start(m_root + "/usr/bin/LumoMediaPlayer", {clip});
        QVERIFY(player.waitForStarted());
        QByteArray output;
        // Said once the first picture of the clip is drawn.
        QTRY_VERIFY_WITH_TIMEOUT((output += player.readAll()).contains("video decoder in use"),
                                 60'000);
        QCOMPARE(player.state(), QProcess::Running);
        player.terminate();
        player.waitForFinished(10'000);
    }
};

QTEST_MAIN(TestPackage)
#include "tst_package.moc"
