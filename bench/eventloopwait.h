#pragma once
// Runs the main thread's event loop until a condition holds, as the benchmarks wait for the
// player: nothing is measured by sleeping.
#include <QCoreApplication>
#include <QElapsedTimer>

// Runs the event loop until done() is true or timeoutMs passes; false on time-out.
template<typename Done>
bool waitUntil(Done done, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    }
    return true;
}
