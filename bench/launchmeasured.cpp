// lumo-launch-measured PROGRAM [ARGUMENTS...]: runs the program and writes its peak resident
// memory, in kilobytes, to file descriptor 3. The kernel counts a child's peak from the size of
// the process it was forked from; forked from this small process rather than from a benchmark
// holding hundreds of megabytes, the figure is the program's own.

#include <cerrno>
#include <csignal>
#include <cstdio>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char *argv[])
{
    if (argc < 2) {
        std::fputs("usage: lumo-launch-measured PROGRAM [ARGUMENTS...]\n", stderr);
        return 127;
    }
    const pid_t child = fork();
    if (child < 0)
        return 127;
    if (child == 0) {
        close(3);
        execvp(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    rusage usage {};
    while (wait4(child, &status, 0, &usage) < 0) {
        if (errno != EINTR)
            return 127;
    }
    dprintf(3, "%ld\n", usage.ru_maxrss);
    if (WIFSIGNALED(status))
        return 128 + WTERMSIG(status);
    return WEXITSTATUS(status);
}
