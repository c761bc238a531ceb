// The notice's lines, whatever a server or a file makes its text: at most three lines of text and
// two of reason, each within the width and ending in an ellipsis when cut, laid out once.
#include "ui/toastoverlay.h"

#include <QApplication>
#include <QFontMetrics>
#include <QTest>

namespace {
constexpr QChar ellipsis(0x2026);

void checkLines(const QStringList &lines, const QFont &font, int width, int maxLines, bool cut)
{
    QVERIFY(!lines.isEmpty());
    QVERIFY2(lines.size() <= maxLines, qPrintable(QString::number(lines.size())));
    const QFontMetrics metrics(font);
    for (const QString &line : lines)
        QVERIFY2(metrics.horizontalAdvance(line) <= width, qPrintable(line.left(80)));
    QCOMPARE(lines.constLast().endsWith(ellipsis), cut);
}
} // namespace

class TestToastOverlay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aHugeNoticeIsCutToThreeLinesAndItsReasonToTwo_data()
    {
        QTest::addColumn<QString>("text");
        // Words, as a long guide name has them, and one word without end.
        QString words;
        while (words.size() < 64 * 1024)
            words += QStringLiteral("programme guide ");
        QTest::newRow("64 KB of words") << words;
        QTest::newRow("one 64 KB word") << QString(64 * 1024, u'x');
        QTest::newRow("40,000 characters")
            << QStringLiteral("The programme guide “%1” couldn’t be loaded.")
                   .arg(QString(40000, u'g'));
    }

    void aHugeNoticeIsCutToThreeLinesAndItsReasonToTwo()
    {
        QFETCH(QString, text);
        QWidget area;
        area.resize(535, 400);
        ToastOverlay toast(&area);
        toast.place(QRect(0, 0, 535, 400));
        toast.setMessage(text, text);
        const int width = 535 - 2 * ToastOverlay::inset - 2 * 14;
        checkLines(toast.shownLines(), toast.font(), width, 3, true);
        checkLines(toast.shownDetailLines(), toast.detailFont(), width, 2, true);
        QVERIFY(text.startsWith(toast.shownLines().constFirst()));
    }

    void aNoticeShowsNoControlsOrOverrides()
    {
        QWidget area;
        ToastOverlay toast(&area);
        toast.place(QRect(0, 0, 700, 400));
        toast.setMessage(QStringLiteral("Could not play \u202Egnp.exe\x01."),
                         QStringLiteral("The server answered 404 Not\r\nFound\x1b."));
        QCOMPARE(toast.shownLines(), QStringList {"Could not play gnp.exe."});
        QCOMPARE(toast.shownDetailLines(), QStringList {"The server answered 404 Not  Found."});
        // What the notice is stays as it came.
        QVERIFY(toast.message().contains(QChar(0x202E)));
    }

    void aShortNoticeIsWhole()
    {
        QWidget area;
        ToastOverlay toast(&area);
        toast.place(QRect(0, 0, 700, 400));
        toast.setMessage(QStringLiteral("Could not play clip.mp4."),
                         QStringLiteral("The server answered 404 Not Found."));
        QCOMPARE(toast.shownLines(), QStringList {"Could not play clip.mp4."});
        QCOMPARE(toast.shownDetailLines(), QStringList {"The server answered 404 Not Found."});
        // Narrow: wrapped at a space onto whole lines.
        toast.place(QRect(0, 0, 170, 400));
        QCOMPARE(toast.shownLines().join(u' '), QStringLiteral("Could not play clip.mp4."));
        QVERIFY(toast.shownLines().size() > 1);
    }
};

QTEST_MAIN(TestToastOverlay)
#include "tst_toastoverlay.moc"
