// How a notice's text breaks into lines, whatever a server makes it: whole when it fits, broken
// at spaces, at most the lines asked for, each within the width, the last ending in an
// ellipsis when the text goes on.
#include "ui/noticelayout.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QTest>

class TestNoticeLayout : public QObject
{
    Q_OBJECT

private:
    QFont m_font;

private Q_SLOTS:
    void initTestCase() { m_font.setPixelSize(13); }

    void aTextThatFitsIsWhole()
    {
        const QString text = QStringLiteral("Could not play clip.mp4.");
        QCOMPARE(NoticeLayout::lines(text, m_font, 600, 3), QStringList {text});
        // Narrow: broken at spaces into whole lines.
        const QStringList narrow = NoticeLayout::lines(text, m_font, 90, 3);
        QVERIFY(narrow.size() > 1);
        QCOMPARE(narrow.join(u' '), text);
    }

    void aLongTextIsCutWithAnEllipsis_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("maxLines");
        QString words;
        while (words.size() < 64 * 1024)
            words += QStringLiteral("programme guide ");
        QTest::newRow("64 KB of words, three lines") << words << 3;
        QTest::newRow("one 64 KB word, two lines") << QString(64 * 1024, u'x') << 2;
        QTest::newRow("a pair of surrogates at the cut")
            << QStringLiteral("\U0001F4FA").repeated(20000) << 1;
    }

    void aLongTextIsCutWithAnEllipsis()
    {
        QFETCH(QString, text);
        QFETCH(int, maxLines);
        const int width = 451;
        const QStringList lines = NoticeLayout::lines(text, m_font, width, maxLines);
        QCOMPARE(lines.size(), maxLines);
        const QFontMetrics metrics(m_font);
        for (const QString &line : lines) {
            QVERIFY2(metrics.horizontalAdvance(line) <= width, qPrintable(line.left(60)));
            QVERIFY(!line.isEmpty() && !line.at(line.size() - 1).isHighSurrogate());
        }
        QVERIFY(lines.constLast().endsWith(NoticeLayout::ellipsis));
        QVERIFY(text.startsWith(QString(lines.constFirst()).remove(NoticeLayout::ellipsis)));
    }
};

QTEST_MAIN(TestNoticeLayout)
#include "tst_noticelayout.moc"
