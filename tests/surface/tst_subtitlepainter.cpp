// Subtitles the player draws itself: broken into lines as mpv would, and however many lines a
// file or a stream sends, only those that fit the picture are laid out, once.
#include "surface/subtitlepainter.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QTest>

class TestSubtitlePainter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textBreaksAtItsLinesThenBetweenWords()
    {
        QFont font(QStringLiteral("sans-serif"));
        font.setPixelSize(20);
        const QFontMetricsF metrics(font);
        const QString words = QStringLiteral("one two three four five six seven eight");
        const QStringList lines = SubtitlePainter::lines(
            QStringLiteral("First line\n") + words, metrics, metrics.horizontalAdvance(words) / 2);
        QCOMPARE(lines.first(), QStringLiteral("First line"));
        QVERIFY(lines.size() >= 3);
        QCOMPARE(lines.mid(1).join(u' '), words);
        for (const QString &line : lines.mid(1))
            QVERIFY(metrics.horizontalAdvance(line) <= metrics.horizontalAdvance(words) / 2);
        // The last ones only, when asked for.
        QCOMPARE(SubtitlePainter::lines(QStringLiteral("a\nb\nc"), metrics, 500, 2),
                 QStringList({"b", "c"}));
    }

    void aSubtitleOfTenThousandLinesShowsWhatFits()
    {
        QString text;
        for (int i = 0; i < 10000; ++i)
            text += QStringLiteral("Line number %1 of a subtitle that goes on\n").arg(i);
        const QSizeF picture(405, 720);
        const QStringList shown = SubtitlePainter::shownLines(text, picture);
        QVERIFY(!shown.isEmpty());
        QVERIFY2(shown.size() < 40, qPrintable(QString::number(shown.size())));
        QVERIFY(shown.join(u' ').endsWith(QStringLiteral("9999 of a subtitle that goes on")));
        // Painted over and over, as every frame does.
        QImage frame(picture.toSize(), QImage::Format_ARGB32_Premultiplied);
        frame.fill(Qt::darkBlue);
        QPainter painter(&frame);
        for (int paint = 0; paint < 50; ++paint)
            SubtitlePainter::paint(painter, text, QRectF(QPointF(0, 0), picture));
        painter.end();
        // White text near the bottom, as for any subtitle.
        bool white = false;
        for (int y = frame.height() - 80; y < frame.height() && !white; ++y)
            for (int x = 0; x < frame.width() && !white; ++x)
                white = frame.pixel(x, y) == qRgb(255, 255, 255);
        QVERIFY(white);
    }
};

QTEST_MAIN(TestSubtitlePainter)
#include "tst_subtitlepainter.moc"
