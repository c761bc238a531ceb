// Texts from files, servers and playlists as they are shown: no control characters, no direction
// overrides, and in menus no shortcuts of their own and no endless items.
#include "sources/displaytext.h"

#include <QTest>

class TestDisplayText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void controlAndDirectionCharactersGo()
    {
        QCOMPARE(DisplayText::clean(QStringLiteral("Photo \u202Egnp.exe")),
                 QStringLiteral("Photo gnp.exe"));
        for (const char16_t c : {0x202A, 0x202B, 0x202C, 0x202D, 0x2066, 0x2067, 0x2068, 0x2069})
            QCOMPARE(DisplayText::clean(QStringLiteral("a") + QChar(c) + QStringLiteral("b")),
                     QStringLiteral("ab"));
        QCOMPARE(DisplayText::clean(QStringLiteral("Not Found\r\n\x1b[31mred\x7f\u0085")),
                 QStringLiteral("Not Found  [31mred "));
        QCOMPARE(DisplayText::clean(QStringLiteral("Music\tCtrl+Q")),
                 QStringLiteral("Music Ctrl+Q"));
        // Right-to-left names keep their letters and marks.
        const QString hebrew = QStringLiteral("\u05E2\u05D1\u05E8\u05D9\u05EA \u200F(1)");
        QCOMPARE(DisplayText::clean(hebrew), hebrew);
        const QString plain = QStringLiteral("News & Weather");
        QCOMPARE(DisplayText::clean(plain), plain);
    }

    void menuItemsHaveNoShortcutsAndAnEnd()
    {
        QCOMPARE(DisplayText::forMenu(QStringLiteral("&Quit")), QStringLiteral("&&Quit"));
        QCOMPARE(DisplayText::forMenu(QStringLiteral("Rock && Roll")),
                 QStringLiteral("Rock &&&& Roll"));
        const QString cut = DisplayText::forMenu(QString(5000, u'w'));
        QCOMPARE(cut.size(), 80);
        QVERIFY(cut.endsWith(QChar(0x2026)));
        // A pair of surrogates is never split.
        const QString emoji
            = DisplayText::forMenu(QString(78, u'e') + QStringLiteral("\U0001F4FA\U0001F4FA"));
        QVERIFY(!emoji.at(emoji.size() - 2).isHighSurrogate());
    }
};

QTEST_APPLESS_MAIN(TestDisplayText)
#include "tst_displaytext.moc"
