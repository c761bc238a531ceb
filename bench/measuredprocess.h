#pragma once
// Runs a program to its end and reports what the whole process took: wall time and peak
// resident memory, as the kernel counts them for that one child.
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

// Nothing when the program cannot be started.
std::optional<ProcessFigures> runMeasured(const QStringList &arguments);
