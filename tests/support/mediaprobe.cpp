#include "mediaprobe.h"

#include <algorithm>

#include <QColor>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <cmath>

namespace MediaProbe {

namespace {
QByteArray run(const QString &program, const QStringList &arguments, QByteArray *errors = nullptr)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(120'000))
        return {};
    if (errors)
        *errors = process.readAllStandardError();
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}
} // namespace

QJsonObject probe(const QString &path)
{
    const QByteArray out
        = run("ffprobe", {"-v", "error", "-show_streams", "-show_format", "-of", "json", path});
    return QJsonDocument::fromJson(out).object();
}

QJsonObject stream(const QJsonObject &probed, const QString &type)
{
    for (const QJsonValue &value : probed.value("streams").toArray()) {
        if (value.toObject().value("codec_type").toString() == type)
            return value.toObject();
    }
    return {};
}

double duration(const QJsonObject &probed)
{
    bool ok = false;
    const double seconds
        = probed.value("format").toObject().value("duration").toString().toDouble(&ok);
    return ok ? seconds : -1;
}

QImage frameAt(const QString &path, double seconds)
{
    const QJsonObject video = stream(probe(path), "video");
    const int width = video.value("width").toInt();
    const int height = video.value("height").toInt();
    if (width <= 0 || height <= 0)
        return {};
    const QByteArray raw = run("ffmpeg",
                               {"-v", "error", "-ss", QString::number(seconds), "-i", path,
                                "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", "rgb24", "-"});
    if (raw.size() != qsizetype(width) * height * 3)
        return {};
    QImage image(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y)
        memcpy(image.scanLine(y), raw.constData() + qsizetype(y) * width * 3, size_t(width) * 3);
    return image;
}

int videoPacketCount(const QString &path)
{
    return run("ffprobe",
               {"-v", "error", "-select_streams", "v", "-count_packets", "-show_entries",
                "stream=nb_read_packets", "-of", "csv=p=0", path})
        .trimmed()
        .toInt();
}

QVector<float> sound(const QString &path)
{
    const QByteArray raw
        = run("ffmpeg",
              {"-v", "error", "-i", path, "-vn", "-ac", "1", "-ar", "48000", "-f", "f32le", "-"});
    QVector<float> samples(raw.size() / qsizetype(sizeof(float)));
    memcpy(samples.data(), raw.constData(), size_t(samples.size()) * sizeof(float));
    return samples;
}

double toneShare(const QVector<float> &samples, double frequency, int sampleRate)
{
    if (samples.isEmpty())
        return 0;
    // Goertzel's single-frequency power against the signal's whole power.
    const double coefficient = 2 * std::cos(2 * M_PI * frequency / sampleRate);
    double previous = 0, beforePrevious = 0, energy = 0;
    for (const float sample : samples) {
        const double current = sample + coefficient * previous - beforePrevious;
        beforePrevious = previous;
        previous = current;
        energy += double(sample) * sample;
    }
    if (energy <= 0)
        return 0;
    const double power = previous * previous + beforePrevious * beforePrevious
        - coefficient * previous * beforePrevious;
    // A pure tone puts energy × n / 2 into its bin.
    return std::min(1.0, power / (energy * samples.size() / 2));
}

bool decodesCleanly(const QString &path, QString *errors)
{
    QProcess process;
    process.start("ffmpeg", {"-v", "error", "-i", path, "-f", "null", "-"});
    if (!process.waitForFinished(120'000))
        return false;
    const QByteArray text = process.readAllStandardError();
    if (errors)
        *errors = QString::fromUtf8(text);
    return process.exitCode() == 0 && text.trimmed().isEmpty();
}

double flashBeepOffset(const QString &path, int *count)
{
    // The pictures' brightness, frame by frame, with their times.
    const QString filter = QStringLiteral("movie=%1,signalstats").arg(path);
    const QByteArray table
        = run("ffprobe",
              {"-v", "error", "-f", "lavfi", "-i", filter, "-show_entries",
               "frame=pts_time:frame_tags=lavfi.signalstats.YAVG", "-of", "csv=p=0"});
    QVector<double> flashes;
    bool bright = false;
    for (const QByteArray &line : table.split('\n')) {
        const QList<QByteArray> fields = line.trimmed().split(',');
        if (fields.size() < 2)
            continue;
        const bool now = fields[1].toDouble() > 128;
        if (now && !bright)
            flashes.append(fields[0].toDouble());
        bright = now;
    }
    // The sound's onsets: the first loud sample after at least 0.3 s of quiet.
    const double audioStart
        = stream(probe(path), QStringLiteral("audio")).value("start_time").toString().toDouble();
    const QVector<float> samples = sound(path);
    QVector<double> beeps;
    qsizetype quietSince = 0;
    for (qsizetype i = 0; i < samples.size(); ++i) {
        if (std::abs(samples[i]) < 0.05f)
            continue;
        if (i - quietSince >= 48'000 * 3 / 10)
            beeps.append(audioStart + double(i) / 48'000);
        quietSince = i;
    }
    QVector<double> offsets;
    for (const double flash : flashes) {
        double best = qQNaN();
        for (const double beep : beeps) {
            if (std::abs(beep - flash) < 0.4 && !(std::abs(beep - flash) >= std::abs(best)))
                best = beep - flash;
        }
        if (!std::isnan(best))
            offsets.append(best);
    }
    if (count)
        *count = int(offsets.size());
    if (offsets.isEmpty())
        return qQNaN();
    std::sort(offsets.begin(), offsets.end());
    return offsets[offsets.size() / 2];
}

QColor meanColour(const QImage &image, const QRect &rect)
{
    const QRect area = rect.intersected(image.rect());
    qint64 r = 0, g = 0, b = 0, count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            r += qRed(pixel);
            g += qGreen(pixel);
            b += qBlue(pixel);
            ++count;
        }
    }
    if (!count)
        return {};
    return QColor(int(r / count), int(g / count), int(b / count));
}

QRect whiteArea(const QImage &image)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    QRect area;
    for (int y = 0; y < rgb.height(); ++y) {
        for (int x = 0; x < rgb.width(); ++x) {
            const QRgb pixel = rgb.pixel(x, y);
            if (qRed(pixel) > 200 && qGreen(pixel) > 200 && qBlue(pixel) > 200)
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

} // namespace MediaProbe
