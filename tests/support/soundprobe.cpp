#include "soundprobe.h"

#include <QProcess>
#include <QTest>

#include <cstdlib>
#include <cstring>

namespace SoundProbe {

double heardFrequency(double seconds)
{
    constexpr int rate = 48000;
    QProcess recorder;
    recorder.start(QStringLiteral("parec"),
                   {QStringLiteral("--device=@DEFAULT_MONITOR@"), QStringLiteral("--format=s16le"),
                    QStringLiteral("--rate=%1").arg(rate), QStringLiteral("--channels=1"),
                    QStringLiteral("--latency-msec=50")});
    if (!recorder.waitForStarted(5000))
        return 0;
    QTest::qWait(int(seconds * 1000) + 200);
    recorder.terminate();
    recorder.waitForFinished(5000);
    const QByteArray bytes = recorder.readAllStandardOutput();
    const qsizetype count = bytes.size() / 2;
    // The first fifth of a second is the stream starting up.
    const qsizetype first = rate / 5;
    if (count - first < rate / 4)
        return 0;
    int crossings = 0;
    int loud = 0;
    qint16 previous = 0;
    for (qsizetype i = first; i < count; ++i) {
        qint16 sample;
        std::memcpy(&sample, bytes.constData() + 2 * i, sizeof sample);
        loud += std::abs(sample) > 1000 ? 1 : 0;
        if (i > first && ((previous < 0) != (sample < 0)))
            ++crossings;
        previous = sample;
    }
    if (loud < (count - first) / 10)
        return 0;
    return crossings / 2.0 / (double(count - first) / rate);
}

} // namespace SoundProbe
