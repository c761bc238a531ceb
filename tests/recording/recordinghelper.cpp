// Plays a clip and records it until the process is killed: the subject of the tests that kill a
// recording. Usage: lumo-recording-helper CLIP OUTPUT.mp4 [--stop-after SECONDS]
// [--die-while-finishing]. Prints "recording" once the recording runs. With --stop-after it
// stops after that many seconds; with --die-while-finishing it kills itself as soon as the
// finished copy of the file has begun.
#include "recording/mp4finisher.h"
#include "recording/playerrecordingcontroller.h"
#include "recordingstage.h"

#include <QApplication>
#include <QFile>
#include <QTimer>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <thread>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.size() < 2) {
        std::fprintf(stderr, "usage: %s CLIP OUTPUT.mp4 [--stop-after S] [--die-while-finishing]\n",
                     argv[0]);
        return 2;
    }
    const QString clip = arguments[0];
    const QString output = arguments[1];
    const qsizetype stopAt = arguments.indexOf(QStringLiteral("--stop-after"));
    const int stopAfterMs = stopAt > 0 ? int(arguments.value(stopAt + 1).toDouble() * 1000) : -1;
    if (arguments.contains(QStringLiteral("--die-while-finishing"))) {
        // Watched from a thread of its own, so the kill lands in the middle of finishing.
        std::thread([finishing = Mp4Finisher::finishingPath(output)] {
            for (;;) {
                if (QFile::exists(finishing))
                    std::raise(SIGKILL);
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        }).detach();
    }
    RecordingStage stage;
    if (!stage.play(clip)) {
        std::fprintf(stderr, "the clip did not play\n");
        return 1;
    }
    PlayerRecordingController recorder;
    recorder.setSaveFileChooser(
        [output](QWidget *, const PlayerRecordingController::SaveRequest &) { return output; });
    QObject::connect(&recorder, &PlayerRecorder::stateChanged, [&recorder, stopAfterMs] {
        if (recorder.state() == PlayerRecordingState::recording) {
            std::printf("recording\n");
            std::fflush(stdout);
            if (stopAfterMs >= 0)
                QTimer::singleShot(stopAfterMs, &recorder, &PlayerRecorder::stopRecording);
        } else if (recorder.state() == PlayerRecordingState::idle) {
            std::fprintf(stderr, "%s\n", qPrintable(recorder.errorMessage().value_or(QString())));
            QCoreApplication::exit(1);
        }
    });
    recorder.startRecording(PlayerRecordingQuality::normal);
    return QApplication::exec();
}
