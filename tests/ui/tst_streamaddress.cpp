// What the address field makes of typed and pasted text.
#include "ui/streamaddress.h"

#include <QTest>

class TestStreamAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleaningJoinsLinesAndTrimsSpacesAndTabs_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("cleaned");
        QTest::newRow("clean") << "http://a.example/x.m3u8"
                               << "http://a.example/x.m3u8";
        QTest::newRow("CR LF inside") << "http://a.exa\r\nmple/x.m3u8"
                                      << "http://a.example/x.m3u8";
        QTest::newRow("lone CR and LF") << "\nhttp://a.ex\rample/\nx"
                                        << "http://a.example/x";
        QTest::newRow("spaces and tabs") << " \t http://a.example/ \t"
                                         << "http://a.example/";
        QTest::newRow("spaces behind a line break") << "http://a.example/x \r\n "
                                                    << "http://a.example/x";
        QTest::newRow("inner space kept") << "a b"
                                          << "a b";
        QTest::newRow("other whitespace kept") << "\u00a0x\u00a0"
                                               << "\u00a0x\u00a0";
        QTest::newRow("only breaks") << "\r\n\r\n"
                                     << "";
        QTest::newRow("empty") << ""
                               << "";
    }

    void cleaningJoinsLinesAndTrimsSpacesAndTabs()
    {
        QFETCH(QString, text);
        QFETCH(QString, cleaned);
        QCOMPARE(StreamAddress::cleaned(text), cleaned);
        // Cleaning is done once: clean text stays as it is.
        QCOMPARE(StreamAddress::cleaned(cleaned), cleaned);
    }

    void onlyWebAddressesOpenByThemselves_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("opened"); // null: never opens by itself
        QTest::newRow("http") << "http://a.example/live.m3u8"
                              << "http://a.example/live.m3u8";
        QTest::newRow("https upper case") << "HTTPS://a.example/list.m3u"
                                          << "HTTPS://a.example/list.m3u";
        QTest::newRow("markdown link") << "[TV](https://a.example/tv.m3u8)"
                                       << "https://a.example/tv.m3u8";
        QTest::newRow("angle brackets") << "<http://a.example/x>"
                                        << "http://a.example/x";
        QTest::newRow("ftp") << "ftp://a.example/live.m3u8" << QString();
        QTest::newRow("file") << "file:///tmp/list.m3u" << QString();
        QTest::newRow("no scheme") << "a.example/live.m3u8" << QString();
        QTest::newRow("prefix being typed") << "htt" << QString();
        QTest::newRow("empty") << "" << QString();
    }

    void onlyWebAddressesOpenByThemselves()
    {
        QFETCH(QString, text);
        QFETCH(QString, opened);
        const std::optional<QString> address = StreamAddress::automaticOpenAddress(text);
        QCOMPARE(address.has_value(), !opened.isNull());
        if (address)
            QCOMPARE(*address, opened);
    }
};

QTEST_APPLESS_MAIN(TestStreamAddress)
#include "tst_streamaddress.moc"
