// Every symbol the product names has a glyph in the icon font.
#include "surface/icons.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QTest>

class TestIcons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySymbolHasAGlyphInTheFont()
    {
        QVERIFY(QFontDatabase::families().contains(QLatin1String(Icons::fontFamily)));
        const QFontMetrics metrics(Icons::font(16));
        const QStringList symbols = Icons::symbols();
        QVERIFY(symbols.size() >= 27);
        for (const QString &symbol : symbols) {
            const QString glyph = Icons::glyph(symbol);
            QCOMPARE(glyph.size(), 1);
            QVERIFY2(metrics.inFont(glyph.at(0)), qPrintable(symbol));
            QVERIFY2(metrics.horizontalAdvance(glyph) > 0, qPrintable(symbol));
        }
        QVERIFY(Icons::glyph(u"no.such.symbol").isEmpty());
    }

    void anIconDrawsTheGlyph()
    {
        const QImage image = Icons::icon(u"play.fill", Qt::black, 16).pixmap(32, 32).toImage();
        int inked = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                inked += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
        QVERIFY(inked > 50);
    }
};

QTEST_MAIN(TestIcons)
#include "tst_icons.moc"
