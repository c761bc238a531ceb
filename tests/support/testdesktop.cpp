#include "testdesktop.h"

#include <QCoreApplication>
#include <QDir>
#include <QPixmap>
#include <QStandardPaths>
#include <QTest>
#include <QWidget>

namespace TestDesktop {

WindowManager::~WindowManager()
{
    m_process.terminate();
    m_process.waitForFinished(5000);
}

bool WindowManager::start()
{
    if (QStandardPaths::findExecutable(QStringLiteral("openbox")).isEmpty()
        || QStandardPaths::findExecutable(QStringLiteral("xdotool")).isEmpty())
        return false;
    m_process.start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
    if (!m_process.waitForStarted())
        return false;
    QTest::qWait(1000); // openbox takes the display
    return m_process.state() == QProcess::Running;
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
