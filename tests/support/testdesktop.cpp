#include "testdesktop.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QPixmap>
#include <QStandardPaths>
#include <QTest>
#include <QThread>
#include <QWidget>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>

namespace TestDesktop {

WindowManager::~WindowManager()
{
    m_process.terminate();
    m_process.waitForFinished(5000);
    if (!m_config.isEmpty())
        QFile::remove(m_config);
}

bool WindowManager::start(int bottomMargin)
{
    if (QStandardPaths::findExecutable(QStringLiteral("openbox")).isEmpty()
        || QStandardPaths::findExecutable(QStringLiteral("xdotool")).isEmpty())
        return false;
    QStringList arguments {QStringLiteral("--sm-disable")};
    if (bottomMargin > 0) {
        m_config = QDir::temp().filePath(
            QStringLiteral("lumo-openbox-%1.xml").arg(QCoreApplication::applicationPid()));
        QFile config(m_config);
        if (!config.open(QIODevice::WriteOnly))
            return false;
        config.write(QStringLiteral("<?xml version=\"1.0\"?>\n"
                                    "<openbox_config xmlns=\"http://openbox.org/3.4/rc\">"
                                    "<margins><bottom>%1</bottom></margins></openbox_config>\n")
                         .arg(bottomMargin)
                         .toUtf8());
        arguments << QStringLiteral("--config-file") << m_config;
    }
    m_process.start(QStringLiteral("openbox"), arguments);
    if (!m_process.waitForStarted())
        return false;
    QTest::qWait(1000); // openbox takes the display
    return m_process.state() == QProcess::Running;
}

WaylandCompositor::~WaylandCompositor()
{
    if (m_pid > 0) {
        ::kill(pid_t(m_pid), SIGTERM);
        ::waitpid(pid_t(m_pid), nullptr, 0);
    }
    if (!m_runtime.isEmpty())
        QDir(m_runtime).removeRecursively();
}

bool WaylandCompositor::start(QSize screen)
{
    if (QStandardPaths::findExecutable(QStringLiteral("weston")).isEmpty()) {
        std::fprintf(stderr, "weston is missing: run ./lumo setup\n");
        return false;
    }
    QByteArray folder = QDir::temp().filePath(QStringLiteral("lumo-wayland.XXXXXX")).toLocal8Bit();
    if (!::mkdtemp(folder.data()))
        return false;
    m_runtime = QString::fromLocal8Bit(folder);
    qputenv("XDG_RUNTIME_DIR", folder);
    const QString socket = QStringLiteral("lumo-wayland");
    // Weston 10 names its backends by module, weston 12 and later by name.
    for (const QString &backend :
         {QStringLiteral("headless-backend.so"), QStringLiteral("headless")}) {
        const QStringList arguments {QStringLiteral("--backend=") + backend,
                                     QStringLiteral("--socket=") + socket,
                                     QStringLiteral("--width=%1").arg(screen.width()),
                                     QStringLiteral("--height=%1").arg(screen.height()),
                                     QStringLiteral("--idle-time=0"),
                                     QStringLiteral("--no-config"),
                                     QStringLiteral("--log=") + m_runtime
                                         + QStringLiteral("/weston.log")};
        if (!QProcess::startDetached(QStringLiteral("weston"), arguments, {}, &m_pid))
            continue;
        for (int waited = 0; waited < 100; ++waited) {
            if (QFile::exists(m_runtime + u'/' + socket)) {
                qputenv("WAYLAND_DISPLAY", socket.toLocal8Bit());
                qputenv("QT_QPA_PLATFORM", "wayland");
                return true;
            }
            if (::waitpid(pid_t(m_pid), nullptr, WNOHANG) == pid_t(m_pid))
                break; // it refused this backend
            QThread::msleep(50);
        }
        if (::kill(pid_t(m_pid), 0) == 0) {
            ::kill(pid_t(m_pid), SIGTERM);
            ::waitpid(pid_t(m_pid), nullptr, 0);
        }
        m_pid = 0;
    }
    std::fprintf(stderr, "weston did not start\n");
    return false;
}

bool xdotool(const QStringList &arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    return tool.waitForFinished(10'000) && tool.exitCode() == 0;
}

void saveScreenshot(QWidget &widget, const QString &name)
{
    const QString folder = QDir(QCoreApplication::applicationDirPath())
                               .absoluteFilePath(QStringLiteral("../screenshots"));
    QDir().mkpath(folder);
    widget.grab().save(QDir(folder).filePath(name + QStringLiteral(".png")));
}

} // namespace TestDesktop
