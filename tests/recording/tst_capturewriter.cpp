#include "mediaprobe.h"
#include "recording/playercapturewriter.h"
#include "recording/recordingnames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>
#include <cmath>
#include <vector>

namespace {

// Red on the left half, blue on the right, drawn like a screen picture (32-bit, top row first).
QImage halves(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.fillRect(0, 0, size.width() / 2, size.height(), QColor(230, 20, 20));
    painter.fillRect(size.width() / 2, 0, size.width() - size.width() / 2, size.height(),
                     QColor(20, 20, 230));
    return image;
}

// 10 ms of stereo sound: a sine of frequency, or silence.
std::vector<float> chunk(double frequency, qint64 firstSample)
{
    std::vector<float> samples(480 * 2);
    for (int i = 0; i < 480; ++i) {
        const double t = double(firstSample + i) / 48'000;
        const float value = frequency > 0 ? float(0.5 * std::sin(2 * M_PI * frequency * t)) : 0.f;
        samples[size_t(2 * i)] = value;
        samples[size_t(2 * i + 1)] = value;
    }
    return samples;
}

// Feeds seconds of pictures and a tone at their real pace on a made-up clock starting at start.
void feed(PlayerCaptureWriter &writer, const QImage &picture, double start, double seconds,
          double toneHz = 1000)
{
    qint64 sample = 0;
    for (int frame = 0; frame < int(seconds * 30); ++frame) {
        const double time = start + frame / 30.0;
        writer.appendVideo(picture, picture.rect(), false, time);
        // The sound heard since the last picture, in 10 ms pieces.
        while (double(sample) / 48'000 < frame / 30.0 + 1 / 30.0) {
            const auto samples = chunk(toneHz, sample);
            writer.appendAudio(samples.data(), 480, start + double(sample) / 48'000);
            sample += 480;
        }
    }
}

} // namespace

class TestCaptureWriter : public QObject
{
    Q_OBJECT

    struct Box
    {
        QByteArray type;
        qint64 offset = 0;
        qint64 size = 0;
    };

    // The top-level boxes of an MP4 file, in order.
    static QList<Box> topLevelBoxes(const QString &path)
    {
        QList<Box> boxes;
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return boxes;
        qint64 offset = 0;
        while (offset + 8 <= file.size()) {
            file.seek(offset);
            const QByteArray header = file.read(16);
            qint64 size = qFromBigEndian<quint32>(header.constData());
            if (size == 1)
                size = qFromBigEndian<qint64>(header.constData() + 8);
            else if (size == 0)
                size = file.size() - offset;
            if (size < 8)
                break;
            boxes.append({header.mid(4, 4), offset, size});
            offset += size;
        }
        return boxes;
    }

private Q_SLOTS:
    void writesHighProfileVideoAndStereoAac()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("out.mp4");
        QString error;
        auto writer = PlayerCaptureWriter::create(path, {1280, 720}, &error);
        QVERIFY2(writer, qPrintable(error));
        // The picture comes in at another size and is scaled to the output.
        feed(*writer, halves({640, 360}), 100, 5);
        const auto outcome = writer->finish();
        QVERIFY2(outcome.error.isEmpty(), qPrintable(outcome.error));
        QCOMPARE(outcome.path, path);
        QVERIFY(!QFile::exists(path + ".fragments"));

        const QJsonObject probed = MediaProbe::probe(path);
        const QJsonObject video = MediaProbe::stream(probed, "video");
        QCOMPARE(video.value("codec_name").toString(), "h264");
        QCOMPARE(video.value("profile").toString(), "High");
        QCOMPARE(video.value("width").toInt(), 1280);
        QCOMPARE(video.value("height").toInt(), 720);
        QCOMPARE(video.value("avg_frame_rate").toString(), "30/1");
        const QJsonObject audio = MediaProbe::stream(probed, "audio");
        QCOMPARE(audio.value("codec_name").toString(), "aac");
        QCOMPARE(audio.value("sample_rate").toString(), "48000");
        QCOMPARE(audio.value("channels").toInt(), 2);
        QVERIFY(std::abs(MediaProbe::duration(probed) - 5) <= 0.3);
        // The finished file is one plain movie with its index before the media, so players
        // read it at once: no fragments, and no fragment header inside the index.
        const QList<Box> boxes = topLevelBoxes(path);
        QStringList types;
        for (const Box &box : boxes)
            types.append(QString::fromLatin1(box.type));
        QVERIFY2(types.indexOf("moov") >= 0 && types.indexOf("mdat") > types.indexOf("moov"),
                 qPrintable(types.join(u' ')));
        QVERIFY2(!types.contains("moof") && !types.contains("mfra"), qPrintable(types.join(u' ')));
        const Box &index = boxes.at(types.indexOf("moov"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.seek(index.offset));
        QVERIFY(!file.read(index.size).contains("mvex"));
        QVERIFY(MediaProbe::decodesCleanly(path));
        // The encoder ran at the documented rate, six bits a pixel: x264 writes its settings
        // into the stream.
        QVERIFY(file.seek(0));
        const QByteArray bytes = file.readAll();
        const qsizetype settings = bytes.indexOf(" bitrate=");
        QVERIFY(settings > 0);
        const QByteArray rate = bytes.mid(settings + 9, 12).split(' ').constFirst();
        QCOMPARE(rate.toLongLong(), RecordingNames::averageBitRate(1280, 720) / 1000);

        const QImage frame = MediaProbe::frameAt(path, 2.5);
        QVERIFY(!frame.isNull());
        const QColor left = MediaProbe::meanColour(frame, QRect(100, 100, 400, 500));
        const QColor right = MediaProbe::meanColour(frame, QRect(780, 100, 400, 500));
        QVERIFY2(std::abs(left.red() - 230) < 16 && left.blue() < 40, qPrintable(left.name()));
        QVERIFY2(std::abs(right.blue() - 230) < 16 && right.red() < 40, qPrintable(right.name()));
        QVERIFY(MediaProbe::toneShare(MediaProbe::sound(path), 1000) > 0.8);

        QCOMPARE(writer->statistics().framesWritten, 150);
        QCOMPARE(writer->statistics().framesDropped, 0);
    }

    void theFileKeepsOneIndexAndTheKeyFrameRhythm()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("keys.mp4");
        auto writer = PlayerCaptureWriter::create(path, {320, 240}, nullptr);
        QVERIFY(writer);
        feed(*writer, halves({320, 240}), 0, 5);
        QVERIFY(writer->finish().error.isEmpty());
        QProcess probe;
        probe.start("ffprobe",
                    {"-v", "error", "-select_streams", "v", "-show_entries", "packet=flags", "-of",
                     "csv=p=0", path});
        QVERIFY(probe.waitForFinished());
        const QList<QByteArray> flags = probe.readAllStandardOutput().split('\n');
        int sinceKey = 0, keys = 0;
        for (const QByteArray &packet : flags) {
            if (packet.isEmpty())
                continue;
            if (packet.startsWith('K')) {
                ++keys;
                sinceKey = 0;
            } else {
                QVERIFY(++sinceKey < PlayerCaptureWriter::keyFrameInterval);
            }
        }
        QVERIFY(keys >= 3);
        // 320 x 240 asks for less than the floor: 4,000,000 bits a second.
        const QJsonObject video = MediaProbe::stream(MediaProbe::probe(path), "video");
        QCOMPARE(video.value("profile").toString(), "High");
    }

    void soundBeforeTheFirstPictureIsDropped()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("late.mp4");
        auto writer = PlayerCaptureWriter::create(path, {320, 240}, nullptr);
        QVERIFY(writer);
        // A second of loud tone before any picture, then silence once pictures come.
        for (qint64 sample = 0; sample < 48'000; sample += 480) {
            const auto tone = chunk(1000, sample);
            writer->appendAudio(tone.data(), 480, 9 + double(sample) / 48'000);
        }
        QVERIFY(!writer->sessionStarted());
        feed(*writer, halves({320, 240}), 10, 3, 0);
        QVERIFY(writer->sessionStarted());
        QVERIFY(writer->finish().error.isEmpty());
        const QJsonObject probed = MediaProbe::probe(path);
        const QJsonObject audio = MediaProbe::stream(probed, "audio");
        QVERIFY(audio.value("start_time").toString().toDouble() < 0.05);
        const QVector<float> sound = MediaProbe::sound(path);
        float loudest = 0;
        for (float sample : sound)
            loudest = std::max(loudest, std::abs(sample));
        QVERIFY2(loudest < 0.01f, qPrintable(QString::number(loudest)));
        QVERIFY(std::abs(MediaProbe::duration(probed) - 3) <= 0.3);
    }

    void soundStraddlingTheFirstPictureIsCutAtIt()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("cut.mp4");
        auto writer = PlayerCaptureWriter::create(path, {320, 240}, nullptr);
        QVERIFY(writer);
        const QImage picture = halves({320, 240});
        writer->appendVideo(picture, picture.rect(), false, 10);
        // A piece that began 5 ms before the picture: its first half is cut.
        const auto tone = chunk(1000, 0);
        writer->appendAudio(tone.data(), 480, 9.995);
        QCOMPARE(writer->statistics().audioLeadIn, -0.005);
        QCOMPARE(writer->statistics().audioRealigned, 0.0);
        QCOMPARE(writer->statistics().audioOffset, 0.0);
        writer->cancel();
    }

    void lateBurstsOfSoundKeepTheirPlace()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("bursts.mp4");
        auto writer = PlayerCaptureWriter::create(path, {320, 240}, nullptr);
        QVERIFY(writer);
        const QImage picture = halves({320, 240});
        writer->appendVideo(picture, picture.rect(), false, 0);
        // Four seconds of sound delivered in bursts: stamps up to 390 ms late, never early.
        qint64 sample = 0;
        for (int chunkIndex = 0; chunkIndex < 400; ++chunkIndex) {
            const auto tone = chunk(1000, sample);
            const double lateness = (chunkIndex % 40) * 0.01;
            writer->appendAudio(tone.data(), 480, double(sample) / 48'000 + lateness);
            sample += 480;
            if (chunkIndex % 3 == 0)
                writer->appendVideo(picture, picture.rect(), false, double(sample) / 48'000);
        }
        QCOMPARE(writer->statistics().audioRealigned, 0.0);
        QVERIFY(std::abs(writer->statistics().audioOffset) < 0.001);
        QVERIFY(writer->finish().error.isEmpty());
    }

    void soundThatStopsForAWhileIsPaddedWithSilence()
    {
        QTemporaryDir dir;
        auto writer = PlayerCaptureWriter::create(dir.filePath("gap.mp4"), {320, 240}, nullptr);
        QVERIFY(writer);
        const QImage picture = halves({320, 240});
        writer->appendVideo(picture, picture.rect(), false, 0);
        qint64 sample = 0;
        for (int chunkIndex = 0; chunkIndex < 300; ++chunkIndex) {
            // Half a second of sound never arrives after the first second (a stall).
            if (chunkIndex == 100)
                sample += 24'000;
            const auto tone = chunk(1000, sample);
            writer->appendAudio(tone.data(), 480, double(sample) / 48'000);
            sample += 480;
        }
        QVERIFY(std::abs(writer->statistics().audioRealigned - 0.5) < 0.001);
        // Back in step afterwards.
        QVERIFY(std::abs(writer->statistics().audioOffset) < 0.001);
        writer->cancel();
    }

    void latePicturesCountAsDropped()
    {
        QTemporaryDir dir;
        auto writer = PlayerCaptureWriter::create(dir.filePath("drops.mp4"), {320, 240}, nullptr);
        QVERIFY(writer);
        const QImage picture = halves({320, 240});
        QVERIFY(writer->appendVideo(picture, picture.rect(), false, 0));
        // The encoder was busy for three slots.
        QVERIFY(writer->appendVideo(picture, picture.rect(), false, 4 / 30.0));
        QCOMPARE(writer->statistics().framesDropped, 3);
        // A picture a little early for the next slot takes it.
        QVERIFY(writer->appendVideo(picture, picture.rect(), false, 4.4 / 30.0));
        QCOMPARE(writer->statistics().framesDropped, 3);
        // One more than a frame early is not needed and is no loss.
        QVERIFY(!writer->appendVideo(picture, picture.rect(), false, 4.5 / 30.0));
        QCOMPARE(writer->statistics().framesDropped, 3);
        // The slots passed over show the picture before them: the rate stays constant.
        QCOMPARE(writer->statistics().framesWritten, 6);
        QVERIFY(writer->finish().error.isEmpty());
    }

    void aRemovedFolderIsNoticedWhileAStillSceneRepeats()
    {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkpath("going"));
        auto writer
            = PlayerCaptureWriter::create(dir.filePath("going/still.mp4"), {320, 240}, nullptr);
        QVERIFY(writer);
        const QImage picture = halves({320, 240});
        QVERIFY(writer->appendVideo(picture, picture.rect(), false, 0));
        QVERIFY(QDir(dir.filePath("going")).removeRecursively());
        // Nothing new is drawn: only repeats are written, and they notice too.
        QVERIFY(!writer->repeatLast(2.0));
        QVERIFY(writer->failed());
        writer->cancel();
    }

    void aPictureLateForItsSlotIsNotLostToARepeat()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("repeats.mp4");
        auto writer = PlayerCaptureWriter::create(path, {320, 240}, nullptr);
        QVERIFY(writer);
        const QImage picture = halves({320, 240});
        QVERIFY(writer->appendVideo(picture, picture.rect(), false, 0));
        // Nothing new came: slots 1 to 3 show the first picture again.
        QVERIFY(writer->repeatLast(3 / 30.0));
        QCOMPARE(writer->statistics().framesWritten, 4);
        // A picture meant for slot 3 comes after the repeat filled it: it takes the next one.
        QVERIFY(writer->appendVideo(picture, picture.rect(), false, 2.8 / 30.0));
        QVERIFY(writer->appendVideo(picture, picture.rect(), false, 4.9 / 30.0));
        QCOMPARE(writer->statistics().framesWritten, 6);
        QCOMPARE(writer->statistics().framesDropped, 0);
        // Repeating up to a time already written adds nothing.
        QVERIFY(writer->repeatLast(4 / 30.0));
        QCOMPARE(writer->statistics().framesWritten, 6);
        QVERIFY(writer->finish().error.isEmpty());
        QCOMPARE(MediaProbe::videoPacketCount(path), 6);
    }

    void aBacklogOfLatePicturesNeverStretchesTheFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("behind.mp4");
        auto writer = PlayerCaptureWriter::create(path, {320, 240}, nullptr);
        QVERIFY(writer);
        const QImage picture = halves({320, 240});
        QVERIFY(writer->appendVideo(picture, picture.rect(), false, 0));
        // The encoder fell a second behind: the repeats reached 5 s while pictures from 4 s on
        // still waited. Those more than a quarter of a second late are left out, not laid after
        // the repeats.
        QVERIFY(writer->repeatLast(5.0));
        QCOMPARE(writer->statistics().framesWritten, 151);
        for (int frame = 0; frame < 20; ++frame)
            QVERIFY(!writer->appendVideo(picture, picture.rect(), false, 4.0 + frame / 30.0));
        QCOMPARE(writer->statistics().framesWritten, 151);
        QCOMPARE(writer->statistics().picturesTooLate, 20);
        // Pictures on time again take their places.
        QVERIFY(writer->appendVideo(picture, picture.rect(), false, 5.0 + 1 / 30.0));
        // Stopped at 5.5 s: the file lasts that long, not a second longer.
        QVERIFY(writer->repeatLast(5.5));
        QVERIFY(writer->finish().error.isEmpty());
        QCOMPARE(MediaProbe::videoPacketCount(path), 166);
    }

    void anExistingFileIsReplaced()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("old.mp4");
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write(QByteArray(3'000'000, 'x'));
        old.close();
        auto writer = PlayerCaptureWriter::create(path, {320, 240}, nullptr);
        QVERIFY(writer);
        feed(*writer, halves({320, 240}), 0, 1);
        QVERIFY(writer->finish().error.isEmpty());
        QVERIFY(QFileInfo(path).size() < 3'000'000);
        QCOMPARE(
            MediaProbe::stream(MediaProbe::probe(path), "video").value("codec_name").toString(),
            "h264");
    }

    void stoppingBeforeAnyPictureKeepsNoFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("empty.mp4");
        auto writer = PlayerCaptureWriter::create(path, {320, 240}, nullptr);
        QVERIFY(writer);
        QVERIFY(QFile::exists(path));
        const auto tone = chunk(1000, 0);
        writer->appendAudio(tone.data(), 480, 1);
        const auto outcome = writer->finish();
        QCOMPARE(outcome.error, "No video frames were captured.");
        QVERIFY(outcome.path.isEmpty());
        QVERIFY(!QFile::exists(path));
    }

    void badSizesAndPlacesAreRefused()
    {
        QTemporaryDir dir;
        QString error;
        QVERIFY(!PlayerCaptureWriter::create(dir.filePath("odd.mp4"), {321, 240}, &error));
        QCOMPARE(error, "The MP4 recording writer could not be configured.");
        QVERIFY(
            !PlayerCaptureWriter::create(dir.filePath("no/such/folder/x.mp4"), {320, 240}, &error));
        QVERIFY(!error.isEmpty());
    }

    void aWriterThatIsNeverFinishedStillLeavesAPlayableFile()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("cut-short.mp4");
        {
            auto writer = PlayerCaptureWriter::create(path, {320, 240}, nullptr);
            QVERIFY(writer);
            feed(*writer, halves({320, 240}), 0, 4);
            // Dropped without finishing, as when the process dies.
        }
        const QJsonObject probed = MediaProbe::probe(path);
        QCOMPARE(MediaProbe::stream(probed, "video").value("codec_name").toString(), "h264");
        QVERIFY(MediaProbe::duration(probed) >= 3);
    }
};

QTEST_GUILESS_MAIN(TestCaptureWriter)
#include "tst_capturewriter.moc"
