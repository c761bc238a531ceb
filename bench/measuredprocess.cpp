#include "measuredprocess.h"

#include <QElapsedTimer>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

std::optional<ProcessFigures> runMeasured(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return std::nullopt;
    std::vector<QByteArray> encoded;
    for (const QString &argument : arguments)
        encoded.push_back(argument.toLocal8Bit());
    std::vector<char *> argv;
    for (QByteArray &argument : encoded)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    int pipeEnds[2];
    if (pipe(pipeEnds) != 0)
        return std::nullopt;
    QElapsedTimer clock;
    clock.start();
    const pid_t child = fork();
    if (child < 0)
        return std::nullopt;
    if (child == 0) {
        dup2(pipeEnds[1], STDOUT_FILENO);
        close(pipeEnds[0]);
        close(pipeEnds[1]);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    close(pipeEnds[1]);
    ProcessFigures figures;
    char buffer[4096];
    for (ssize_t got; (got = read(pipeEnds[0], buffer, sizeof buffer)) != 0;) {
        if (got > 0)
            figures.output.append(buffer, got);
        else if (errno != EINTR)
            break;
    }
    close(pipeEnds[0]);
    int status = 0;
    rusage usage {};
    while (wait4(child, &status, 0, &usage) < 0) {
        if (errno != EINTR)
            return std::nullopt;
    }
    figures.seconds = double(clock.nsecsElapsed()) / 1e9;
    figures.peakResidentMegabytes = double(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
    figures.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (figures.exitCode == 127)
        return std::nullopt;
    return figures;
}
