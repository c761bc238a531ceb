// Plays a clip and records it until the process is killed: the killed-recording test's subject.
// Usage: lumo-recording-helper CLIP OUTPUT.mp4. Prints "recording" once the recording runs.
#include "recording/playerrecordingcontroller.h"
#include "recordingstage.h"

#include <QApplication>
#include <cstdio>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s CLIP OUTPUT.mp4\n", argv[0]);
        return 2;
    }
    const QString clip = QString::fromLocal8Bit(argv[1]);
    const QString output = QString::fromLocal8Bit(argv[2]);
    RecordingStage stage;
    if (!stage.play(clip)) {
        std::fprintf(stderr, "the clip did not play\n");
        return 1;
    }
    PlayerRecordingController recorder;
    recorder.setSaveFileChooser(
        [output](QWidget *, const PlayerRecordingController::SaveRequest &) { return output; });
    QObject::connect(&recorder, &PlayerRecorder::stateChanged, [&recorder] {
        if (recorder.state() == PlayerRecordingState::recording) {
            std::printf("recording\n");
            std::fflush(stdout);
        } else if (recorder.state() == PlayerRecordingState::idle) {
            std::fprintf(stderr, "%s\n", qPrintable(recorder.errorMessage().value_or(QString())));
            QCoreApplication::exit(1);
        }
    });
    recorder.startRecording(PlayerRecordingQuality::normal);
    return QApplication::exec();
}
