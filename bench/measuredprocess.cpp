#include "measuredprocess.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

QString launcherPath()
{
    const QString executable = QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget();
    return QFileInfo(executable).dir().filePath(QStringLiteral("lumo-launch-measured"));
}

// Everything the descriptor gives until its end.
QByteArray readAll(int descriptor)
{
    QByteArray bytes;
    char buffer[4096];
    for (ssize_t got; (got = read(descriptor, buffer, sizeof buffer)) != 0;) {
        if (got > 0)
            bytes.append(buffer, got);
        else if (errno != EINTR)
            break;
    }
    return bytes;
}

} // namespace

std::optional<ProcessFigures> runMeasured(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return std::nullopt;
    std::vector<QByteArray> encoded {launcherPath().toLocal8Bit()};
    for (const QString &argument : arguments)
        encoded.push_back(argument.toLocal8Bit());
    std::vector<char *> argv;
    for (QByteArray &argument : encoded)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    int pipeEnds[2];
    int memoryEnds[2]; // where the launcher writes the peak
    if (pipe(pipeEnds) != 0)
        return std::nullopt;
    if (pipe(memoryEnds) != 0) {
        close(pipeEnds[0]);
        close(pipeEnds[1]);
        return std::nullopt;
    }
    // Spawned rather than forked: a fork copies the page tables of this benchmark, which may
    // hold hundreds of megabytes, and that copy would be counted as the program's time.
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, memoryEnds[1], 3);
    for (const int end : {pipeEnds[0], pipeEnds[1], memoryEnds[0], memoryEnds[1]}) {
        if (end != 3 && end != STDOUT_FILENO)
            posix_spawn_file_actions_addclose(&actions, end);
    }
    QElapsedTimer clock;
    clock.start();
    pid_t child = 0;
    const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        for (const int end : {pipeEnds[0], pipeEnds[1], memoryEnds[0], memoryEnds[1]})
            close(end);
        return std::nullopt;
    }
    close(pipeEnds[1]);
    close(memoryEnds[1]);
    ProcessFigures figures;
    figures.output = readAll(pipeEnds[0]);
    close(pipeEnds[0]);
    const QByteArray peakKilobytes = readAll(memoryEnds[0]).trimmed();
    close(memoryEnds[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return std::nullopt;
    }
    figures.seconds = double(clock.nsecsElapsed()) / 1e9;
    bool read = false;
    figures.peakResidentMegabytes = peakKilobytes.toDouble(&read) / 1024.0;
    figures.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (figures.exitCode == 127 || !read)
        return std::nullopt;
    return figures;
}
