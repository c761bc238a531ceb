#include "testmedia.h"

#include <QDir>
#include <QProcess>
#include <QTest>

namespace TestMedia {

namespace {
bool runFfmpeg(const QStringList &arguments)
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 QStringList {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y")}
                     + arguments);
    if (!ffmpeg.waitForFinished(120'000) || ffmpeg.exitCode() != 0) {
        qWarning("ffmpeg failed: %s", ffmpeg.readAllStandardError().constData());
        return false;
    }
    return true;
}

// FFmpeg 6 and later ignore a written rotate tag and set the turn with -display_rotation, an
// input option FFmpeg 5 does not have.
bool ffmpegHasDisplayRotation()
{
    static const bool has = [] {
        QProcess ffmpeg;
        ffmpeg.start(
            QStringLiteral("ffmpeg"),
            {QStringLiteral("-hide_banner"), QStringLiteral("-h"), QStringLiteral("full")});
        ffmpeg.waitForFinished(30'000);
        return ffmpeg.readAllStandardOutput().contains("-display_rotation");
    }();
    return has;
}
} // namespace

bool makeClip(const QString &path, double seconds, QSize size, int fps, bool withAudio)
{
    QStringList arguments {"-f", "lavfi", "-i",
                           QStringLiteral("testsrc2=size=%1x%2:rate=%3:duration=%4")
                               .arg(size.width())
                               .arg(size.height())
                               .arg(fps)
                               .arg(seconds)};
    if (withAudio)
        arguments
            += {"-f", "lavfi", "-i", QStringLiteral("sine=frequency=440:duration=%1").arg(seconds)};
    arguments += {"-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p"};
    if (withAudio)
        arguments += {"-c:a", "aac", "-shortest"};
    arguments += {"-movflags", "+faststart", path};
    return runFfmpeg(arguments);
}

bool makeFlashBeep(const QString &path, double seconds, QSize size)
{
    return runFfmpeg(
        {"-f",
         "lavfi",
         "-i",
         QStringLiteral("color=c=black:size=%1x%2:rate=30:duration=%3,"
                        "drawbox=x=0:y=0:w=iw:h=ih:color=white:t=fill:"
                        "enable='lt(mod(t\\,1)\\,0.1)'")
             .arg(size.width())
             .arg(size.height())
             .arg(seconds),
         "-f",
         "lavfi",
         "-i",
         QStringLiteral("aevalsrc='if(lt(mod(t\\,1)\\,0.1)\\,0.8*sin(2*PI*1000*t)\\,0)':"
                        "s=48000:d=%1")
             .arg(seconds),
         "-c:v",
         "libx264",
         "-preset",
         "ultrafast",
         "-pix_fmt",
         "yuv420p",
         "-c:a",
         "aac",
         "-shortest",
         "-movflags",
         "+faststart",
         path});
}

bool makeColourThirds(const QString &path, QSize size, double seconds, int toneHz)
{
    const int w = size.width();
    const int h = size.height();
    const QString filter = QStringLiteral("drawbox=x=%1:y=0:w=%2:h=%3:color=0x00ff00:t=fill,"
                                          "drawbox=x=%4:y=0:w=%5:h=%3:color=0x0000ff:t=fill,"
                                          "drawbox=x=0:y=0:w=%6:h=%7:color=white:t=fill")
                               .arg(w / 3)
                               .arg(w * 2 / 3 - w / 3)
                               .arg(h)
                               .arg(w * 2 / 3)
                               .arg(w - w * 2 / 3)
                               .arg(w)
                               .arg(h / 10);
    QStringList arguments {"-f", "lavfi", "-i",
                           QStringLiteral("color=c=0xff0000:size=%1x%2:rate=25:duration=%3")
                               .arg(w)
                               .arg(h)
                               .arg(seconds)};
    if (toneHz > 0)
        arguments += {"-f", "lavfi", "-i",
                      QStringLiteral("sine=frequency=%1:duration=%2").arg(toneHz).arg(seconds)};
    arguments += {"-vf", filter, "-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p"};
    if (toneHz > 0)
        arguments += {"-c:a", "aac", "-shortest"};
    arguments += {"-movflags", "+faststart", path};
    return runFfmpeg(arguments);
}

bool makeMovingPicture(const QString &path, const QString &imagePath, QSize size,
                       double holdSeconds, double moveSeconds)
{
    const double total = holdSeconds * 2 + moveSeconds;
    const QString filter
        = QStringLiteral("[1:v]scale=-2:%1[picture];"
                         "[0:v][picture]overlay=x='(W-w)*min(max(t-%2,0)/%3,1)':y=0:shortest=1")
              .arg(size.height())
              .arg(holdSeconds)
              .arg(moveSeconds);
    return runFfmpeg({"-f",
                      "lavfi",
                      "-i",
                      QStringLiteral("color=c=gray:size=%1x%2:rate=25:duration=%3")
                          .arg(size.width())
                          .arg(size.height())
                          .arg(total),
                      "-loop",
                      "1",
                      "-i",
                      imagePath,
                      "-filter_complex",
                      filter,
                      "-c:v",
                      "libx264",
                      "-preset",
                      "ultrafast",
                      "-pix_fmt",
                      "yuv420p",
                      "-t",
                      QString::number(total),
                      "-movflags",
                      "+faststart",
                      path});
}

bool makeRotated(const QString &source, const QString &path, int degrees)
{
    // The tag turns clockwise, -display_rotation counter-clockwise.
    if (ffmpegHasDisplayRotation())
        return runFfmpeg(
            {"-display_rotation", QString::number(-degrees), "-i", source, "-c", "copy", path});
    return runFfmpeg({"-i", source, "-c", "copy", "-metadata:s:v",
                      QStringLiteral("rotate=%1").arg(degrees), path});
}

bool makeSegments(const QString &folder, int count)
{
    QDir().mkpath(folder);
    return runFfmpeg({"-f",
                      "lavfi",
                      "-i",
                      QStringLiteral("testsrc2=size=160x120:rate=10:duration=%1").arg(count),
                      "-f",
                      "lavfi",
                      "-i",
                      QStringLiteral("sine=duration=%1").arg(count),
                      "-c:v",
                      "libx264",
                      "-preset",
                      "ultrafast",
                      "-g",
                      "10",
                      "-pix_fmt",
                      "yuv420p",
                      "-c:a",
                      "aac",
                      "-shortest",
                      "-f",
                      "hls",
                      "-hls_time",
                      "1",
                      "-hls_list_size",
                      "0",
                      "-hls_segment_filename",
                      folder + QStringLiteral("/seg%d.ts"),
                      folder + QStringLiteral("/all.m3u8")});
}

QByteArray liveIndex(qint64 elapsedMs, int segmentCount, int window)
{
    const int last = std::min(int(elapsedMs / 1000) + window, segmentCount);
    const int first = std::max(last - window, 0);
    QByteArray index = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:1\n";
    index += "#EXT-X-MEDIA-SEQUENCE:" + QByteArray::number(first) + "\n";
    for (int i = first; i < last; ++i)
        index += "#EXTINF:1.000000,\nseg" + QByteArray::number(i) + ".ts\n";
    return index;
}

} // namespace TestMedia
