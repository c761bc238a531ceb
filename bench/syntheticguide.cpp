#include "syntheticguide.h"

#include <QDateTime>
#include <QFile>
#include <QRandomGenerator>
#include <QTimeZone>

#include <cstdio>

namespace {

const char *const categories[] = {"News", "Sports", "Movie", "Kids", "Music", "Documentary"};

QByteArray channelId(int channel)
{
    return "ch" + QByteArray::number(channel).rightJustified(5, '0') + ".example.tv";
}

} // namespace

bool writeSyntheticGuide(const QString &path, const SyntheticGuide &guide, qint64 *count)
{
    FILE *file = std::fopen(QFile::encodeName(path).constData(), "wb");
    if (!file)
        return false;
    QRandomGenerator random(20261125);
    QByteArray out;
    out.reserve(1 << 22);
    const auto flush = [&] {
        std::fwrite(out.constData(), 1, size_t(out.size()), file);
        out.clear();
    };
    out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE tv SYSTEM \"xmltv.dtd\">\n"
           "<tv generator-info-name=\"lumo-bench\">\n";
    for (int channel = 0; channel < guide.channels; ++channel) {
        out += "  <channel id=\"" + channelId(channel)
            + "\">\n    <display-name lang=\"en\">Channel " + QByteArray::number(channel)
            + "</display-name>\n    <icon src=\"https://logos.example.tv/"
            + QByteArray::number(channel) + ".png\"/>\n  </channel>\n";
    }
    qint64 written = 0;
    const int slots = guide.days * 48;
    for (int channel = 0; channel < guide.channels; ++channel) {
        const QByteArray id = channelId(channel);
        for (int slot = 0; slot < slots; ++slot) {
            const qint64 start = guide.firstDay + qint64(slot) * 1800;
            const auto time = [](qint64 seconds) {
                return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc())
                           .toString(QStringLiteral("yyyyMMddHHmmss"))
                           .toLatin1()
                    + " +0000";
            };
            const int title = int(random.bounded(5000));
            out += "  <programme start=\"" + time(start) + "\" stop=\"" + time(start + 1800)
                + "\" channel=\"" + id + "\">\n    <title lang=\"en\">Show number "
                + QByteArray::number(title) + " &amp; friends</title>\n";
            if (guide.descriptions) {
                out += "    <desc lang=\"en\">Episode " + QByteArray::number(slot)
                    + ": the team meets again, with guests.</desc>\n    <category lang=\"en\">"
                    + categories[title % 6] + "</category>\n";
            }
            out += "  </programme>\n";
            ++written;
            if (out.size() > (1 << 22) - 4096)
                flush();
        }
    }
    out += "</tv>\n";
    flush();
    const bool ok = std::fclose(file) == 0;
    if (count)
        *count = written;
    return ok;
}

QByteArray syntheticGuidePlaylist(int channels, int step, const QString &guideName,
                                  const QByteArray &headerAttributes)
{
    QByteArray text = "#EXTM3U x-tvg-url=\"" + guideName.toUtf8() + "\"";
    if (!headerAttributes.isEmpty())
        text += ' ' + headerAttributes;
    text += '\n';
    for (int channel = 0; channel < channels; channel += step) {
        text += "#EXTINF:-1 tvg-id=\"" + channelId(channel) + "\" group-title=\"News\",Channel "
            + QByteArray::number(channel) + "\nhttp://line.example.tv/live/"
            + QByteArray::number(channel) + ".ts\n";
    }
    return text;
}
