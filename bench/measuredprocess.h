#pragma once
// Runs a program to its end and reports what the whole process took: wall time and peak
// resident memory, as the kernel counts them for that one program.
#include <QByteArray>
#include <QStringList>
#include <optional>

struct ProcessFigures
{
    double seconds = 0;
    double peakResidentMegabytes = 0;
    int exitCode = -1;
    QByteArray output; // what it wrote to standard output
};

// Nothing when the program cannot be started. The program is started by lumo-launch-measured,
// beside this executable, so that its peak memory is its own.
std::optional<ProcessFigures> runMeasured(const QStringList &arguments);
