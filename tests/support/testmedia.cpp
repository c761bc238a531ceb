#include "testmedia.h"

#include <QDir>
#include <QFile>
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

bool makeWalkingPicture(const QString &path, const QString &imagePath, QSize size, int pictureWidth,
                        int fromX, int toX, double seconds)
{
    const QString filter
        = QStringLiteral("[1:v]scale=%1:-2[picture];"
                         "[0:v][picture]overlay=x='%2+(%3)*min(t/%4,1)':y=(H-h)/2:shortest=1")
              .arg(pictureWidth)
              .arg(fromX)
              .arg(toX - fromX)
              .arg(seconds);
    return runFfmpeg({"-f",
                      "lavfi",
                      "-i",
                      QStringLiteral("color=c=gray:size=%1x%2:rate=25:duration=%3")
                          .arg(size.width())
                          .arg(size.height())
                          .arg(seconds),
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
                      QString::number(seconds),
                      "-movflags",
                      "+faststart",
                      path});
}

bool makeStill(const QString &path, const QString &imagePath, QSize size, double seconds)
{
    return runFfmpeg(
        {"-loop", "1", "-framerate", "25", "-i", imagePath, "-vf",
         QStringLiteral("scale=%1:%2,format=yuv420p").arg(size.width()).arg(size.height()), "-c:v",
         "libx264", "-preset", "ultrafast", "-t", QString::number(seconds), "-movflags",
         "+faststart", path});
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

bool writeSubRip(const QString &path, const QByteArray &text, double seconds)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const int whole = int(seconds);
    const QByteArray end = QStringLiteral("%1:%2:%3,%4")
                               .arg(whole / 3600, 2, 10, QChar(u'0'))
                               .arg(whole / 60 % 60, 2, 10, QChar(u'0'))
                               .arg(whole % 60, 2, 10, QChar(u'0'))
                               .arg(int((seconds - whole) * 1000), 3, 10, QChar(u'0'))
                               .toLatin1();
    file.write("1\n00:00:00,000 --> " + end + "\n" + text + "\n\n");
    return file.error() == QFile::NoError;
}

bool makeTracks(const QString &path, double seconds, bool flagged, bool dark, QSize size,
                const QString &englishText, const QString &frenchText)
{
    const QString english = path + QStringLiteral(".en.srt");
    const QString french = path + QStringLiteral(".fr.srt");
    if (!writeSubRip(english, englishText.toUtf8(), seconds)
        || !writeSubRip(french, frenchText.toUtf8(), seconds))
        return false;
    const QString picture = dark ? QStringLiteral("color=c=black:") : QStringLiteral("testsrc2=");
    const bool made = runFfmpeg({"-f",
                                 "lavfi",
                                 "-i",
                                 QStringLiteral("%1size=%2x%3:rate=25:duration=%4")
                                     .arg(picture)
                                     .arg(size.width())
                                     .arg(size.height())
                                     .arg(seconds),
                                 "-f",
                                 "lavfi",
                                 "-i",
                                 QStringLiteral("sine=frequency=440:duration=%1").arg(seconds),
                                 "-f",
                                 "lavfi",
                                 "-i",
                                 QStringLiteral("sine=frequency=880:duration=%1").arg(seconds),
                                 "-i",
                                 english,
                                 "-i",
                                 french,
                                 "-map",
                                 "0",
                                 "-map",
                                 "1",
                                 "-map",
                                 "2",
                                 "-map",
                                 "3",
                                 "-map",
                                 "4",
                                 "-c:v",
                                 "libx264",
                                 "-preset",
                                 "ultrafast",
                                 "-pix_fmt",
                                 "yuv420p",
                                 "-c:a",
                                 "aac",
                                 "-c:s",
                                 "srt",
                                 "-metadata:s:a:0",
                                 "language=eng",
                                 "-metadata:s:a:1",
                                 "language=fre",
                                 "-metadata:s:a:1",
                                 "title=Commentary",
                                 "-metadata:s:s:0",
                                 "language=eng",
                                 "-metadata:s:s:1",
                                 "language=fre",
                                 "-disposition:a:0",
                                 flagged ? "default" : "0",
                                 "-disposition:a:1",
                                 "0",
                                 "-disposition:s:0",
                                 "0",
                                 "-disposition:s:1",
                                 "0",
                                 path});
    QFile::remove(english);
    QFile::remove(french);
    return made;
}

bool makeTransportStream(const QString &path, double seconds)
{
    return runFfmpeg(
        {"-f",        "lavfi",
         "-i",        QStringLiteral("testsrc2=size=160x120:rate=10:duration=%1").arg(seconds),
         "-f",        "lavfi",
         "-i",        QStringLiteral("sine=duration=%1").arg(seconds),
         "-c:v",      "libx264",
         "-preset",   "ultrafast",
         "-g",        "10",
         "-pix_fmt",  "yuv420p",
         "-c:a",      "aac",
         "-shortest", "-f",
         "mpegts",    path});
}

bool makeHlsWithTwoLanguages(const QString &folder, double seconds)
{
    return runFfmpeg({"-f",
                      "lavfi",
                      "-i",
                      QStringLiteral("testsrc2=size=320x240:rate=25:duration=%1").arg(seconds),
                      "-f",
                      "lavfi",
                      "-i",
                      QStringLiteral("sine=frequency=440:duration=%1").arg(seconds),
                      "-f",
                      "lavfi",
                      "-i",
                      QStringLiteral("sine=frequency=880:duration=%1").arg(seconds),
                      "-map",
                      "0:v",
                      "-map",
                      "1:a",
                      "-map",
                      "2:a",
                      "-c:v",
                      "libx264",
                      "-preset",
                      "ultrafast",
                      "-g",
                      "25",
                      "-c:a",
                      "aac",
                      "-f",
                      "hls",
                      "-hls_time",
                      "2",
                      "-hls_playlist_type",
                      "vod",
                      "-master_pl_name",
                      "master.m3u8",
                      "-var_stream_map",
                      "v:0,agroup:aud a:0,agroup:aud,language:eng,name:eng,default:yes "
                      "a:1,agroup:aud,language:fre,name:fre",
                      "-hls_segment_filename",
                      folder + QStringLiteral("/%v_%03d.ts"),
                      folder + QStringLiteral("/%v.m3u8")});
}

} // namespace TestMedia
