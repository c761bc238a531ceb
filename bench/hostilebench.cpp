// What hostile input costs: `lumo-cli guide` as a whole process on guides made to hurt (entity
// bombs, floods of channels, endless titles), with its time and peak memory, and the layout of
// a notice whose text a server made 64 KB long, and a subtitle of 10,000 lines. Pass --quick to
// leave out the largest guides.

#include "benchreport.h"
#include "hostileguides.h"
#include "measuredprocess.h"

#include "surface/subtitlepainter.h"
#include "ui/noticelayout.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>

#include <algorithm>
#include <vector>

namespace {

void measureGuide(BenchReport &report, const QString &key, const QString &playlist,
                  const QString &guide)
{
    const std::optional<ProcessFigures> figures
        = runMeasured({QStringLiteral(LUMO_CLI_PATH), QStringLiteral("guide"), playlist, guide,
                       QStringLiteral("--at"), QStringLiteral("2026-11-25T19:30:00Z")});
    if (!figures || figures->exitCode != 0 || !figures->output.contains("\"After\"")) {
        report.note(QStringLiteral("%1: lumo-cli guide failed").arg(key));
        return;
    }
    report.add(key + QStringLiteral(".seconds"), figures->seconds, QStringLiteral("s"));
    report.add(key + QStringLiteral(".peakRss"), figures->peakResidentMegabytes,
               QStringLiteral("MB"));
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const bool quick = app.arguments().contains(QStringLiteral("--quick"));
    BenchReport report(QStringLiteral("hostile"));
    QTemporaryDir dir;
    const QString playlist = dir.filePath(QStringLiteral("list.m3u"));
    writeFile(playlist,
              "#EXTM3U\n#EXTINF:-1 tvg-id=\"a\",A\nhttp://h/a\n"
              "#EXTINF:-1 tvg-id=\"same\",Same\nhttp://h/s\n");

    using namespace HostileGuides;
    struct Case
    {
        QString key;
        std::function<bool(const QString &)> write;
        bool large = false;
    };
    const auto packed = [](std::function<void(const Sink &)> write) {
        return [write](const QString &path) {
            return writeGzip(path, write);
        };
    };
    const std::vector<Case> cases {
        {QStringLiteral("guide.nested1e7"),
         [](const QString &path) {
             return writeFile(path, nestedEntities(7));
         }},
        {QStringLiteral("guide.nested1e9"),
         [](const QString &path) {
             return writeFile(path, nestedEntities(9));
         }},
        {QStringLiteral("guide.quadratic114KB"),
         [](const QString &path) {
             return writeFile(path, repeatedEntity(57'000, 11'000));
         }},
        {QStringLiteral("guide.gzipEntities5GB"),
         [](const QString &path) {
             return writeFile(path, gzip(repeatedEntity(1 << 20, 5000)));
         }},
        {QStringLiteral("guide.channels2M"),
         packed([](const Sink &sink) { manyChannels(2'000'000, false, sink); })},
        {QStringLiteral("guide.identicalChannels33M"),
         packed([](const Sink &sink) { manyChannels(33'000'000, true, sink); }), true},
        {QStringLiteral("guide.title300MB"),
         packed([](const Sink &sink) { longTitle(qint64(300) << 20, sink); })},
        {QStringLiteral("guide.title1GiB"),
         packed([](const Sink &sink) { longTitle(qint64(1) << 30, sink); }), true},
    };
    for (const Case &guideCase : cases) {
        if (quick && guideCase.large)
            continue;
        const QString path = dir.filePath(guideCase.key + QStringLiteral(".xml.gz"));
        if (!guideCase.write(path)) {
            report.note(QStringLiteral("%1: cannot write the guide").arg(guideCase.key));
            continue;
        }
        report.add(guideCase.key + QStringLiteral(".fileBytes"), double(QFile(path).size()),
                   QStringLiteral("bytes"));
        measureGuide(report, guideCase.key, playlist, path);
        QFile::remove(path);
    }

    // A notice laid out for a 535-pixel player area, text and reason: the median of 21.
    QString words;
    while (words.size() < 64 * 1024)
        words += QStringLiteral("programme guide ");
    for (const auto &[key, text] :
         {std::pair {QStringLiteral("notice.words64KB"), words},
          std::pair {QStringLiteral("notice.word64KB"), QString(64 * 1024, u'x')}}) {
        QFont font = app.font();
        font.setPixelSize(13);
        std::vector<double> times;
        for (int run = 0; run < 21; ++run) {
            QElapsedTimer timer;
            timer.start();
            const QStringList lines = NoticeLayout::lines(text, font, 451, 3);
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
            if (lines.size() > 3)
                report.note(QStringLiteral("%1: more than three lines").arg(key));
        }
        std::sort(times.begin(), times.end());
        report.add(key + QStringLiteral(".layoutMs"), times[times.size() / 2],
                   QStringLiteral("ms"));
    }

    // A subtitle of 10,000 lines over a 1080p picture: its first paint lays it out, the next
    // ones (every frame while it stands) reuse that.
    QString subtitle;
    for (int i = 0; i < 10000; ++i)
        subtitle += QStringLiteral("Line number %1 of a subtitle that goes on\n").arg(i);
    QImage frame(1920, 1080, QImage::Format_ARGB32_Premultiplied);
    frame.fill(Qt::black);
    QPainter painter(&frame);
    const QRectF picture(0, 0, 1920, 1080);
    SubtitlePainter::paint(painter, QStringLiteral("Fonts loaded"), picture);
    QElapsedTimer first;
    first.start();
    SubtitlePainter::paint(painter, subtitle, picture);
    report.add(QStringLiteral("subtitle.lines10000.firstPaintMs"),
               double(first.nsecsElapsed()) / 1e6, QStringLiteral("ms"));
    std::vector<double> paints;
    for (int run = 0; run < 21; ++run) {
        QElapsedTimer timer;
        timer.start();
        SubtitlePainter::paint(painter, subtitle, picture);
        paints.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    painter.end();
    std::sort(paints.begin(), paints.end());
    report.add(QStringLiteral("subtitle.lines10000.paintMs"), paints[paints.size() / 2],
               QStringLiteral("ms"));

    const QString json = jsonPathFromArguments(argc, argv);
    return json.isEmpty() || report.write(json) ? 0 : 1;
}
