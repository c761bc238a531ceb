// The attributes of #EXTINF lines, found in one reading of the line: every lookup, and where the
// title begins, agree with the rules read the plain way, on chosen and on random lines.
#include "sources/asciiprefix.h"
#include "sources/extinfattributes.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The places where a value opens ("=" then a quote), each with the first quote two or more
// characters after its "=", or -1.
QList<std::pair<qsizetype, qsizetype>> plainPlaces(QStringView line)
{
    QList<std::pair<qsizetype, qsizetype>> places;
    for (qsizetype at = 0; at + 1 < line.size(); ++at) {
        if (line[at] == u'=' && line[at + 1] == u'"')
            places.append({at, line.indexOf(u'"', at + 2)});
    }
    return places;
}

std::optional<QStringView> plainValue(QStringView line, QStringView name)
{
    for (const auto &[equals, closing] : plainPlaces(line)) {
        if (equals < name.size()
            || line.sliced(equals - name.size(), name.size()).compare(name, Qt::CaseInsensitive)
                != 0)
            continue;
        if (closing < 0)
            return std::nullopt;
        const QStringView value = line.sliced(equals + 2, closing - equals - 2).trimmed();
        return value.isEmpty() ? std::nullopt : std::optional<QStringView>(value);
    }
    return std::nullopt;
}

// The first comma outside the values, values being read from left to right (a value's own "="
// and quotes open none); with a value left open, the first comma of all.
qsizetype plainTitleComma(QStringView line)
{
    qsizetype valueEnd = 0;
    for (const auto &[equals, closing] : plainPlaces(line)) {
        if (equals < valueEnd)
            continue;
        const qsizetype comma = line.indexOf(u',', valueEnd);
        if (comma >= 0 && comma < equals)
            return comma;
        if (closing < 0)
            return line.indexOf(u',');
        valueEnd = closing + 1;
    }
    return line.indexOf(u',', valueEnd);
}

const QList<QStringView> names {u"tvg-name",    u"tvg-shift",       u"tvg-logo",
                                u"group-title", u"tvg-country",     u"country",
                                u"tvg-id",      u"http-user-agent", u"http-referrer",
                                u"catchup",     u"catchup-source",  u"x"};

void compareWithPlainReading(QStringView line)
{
    const ExtinfAttributes attributes(line);
    const ExtinfAttributes::NameSet set(names.constData(), names.size());
    const ExtinfAttributes::Values values = attributes.values(set);
    for (qsizetype i = 0; i < names.size(); ++i) {
        const std::optional<QStringView> expected = plainValue(line, names[i]);
        QCOMPARE(attributes.value(names[i]), expected);
        QCOMPARE(values[i], expected);
    }
    QCOMPARE(attributes.titleComma(), plainTitleComma(line));
}

} // namespace

class TestExtinfAttributes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void chosenLines_data()
    {
        QTest::addColumn<QString>("line");
        QTest::newRow("plain") << u"#EXTINF:-1 tvg-id=\"a.us\" tvg-name=\"A\" group-title=\"News\","
                                  "A, the channel"_s;
        QTest::newRow("comma in a value")
            << u"#EXTINF:-1 http-user-agent=\"KHTML, like Gecko\",Title"_s;
        QTest::newRow("no comma") << u"#EXTINF:-1 tvg-name=\"A\""_s;
        QTest::newRow("unclosed value") << u"#EXTINF:-1 tvg-id=\"a, tvg-name=\"B\",T"_s;
        QTest::newRow("quote inside a value") << u"#EXTINF:-1 x=\"a=\"b\" tvg-name=\"C\",T"_s;
        QTest::newRow("upper-case names") << u"#EXTINF:-1 TVG-NAME=\"U\" Group-Title=\"G\",T"_s;
        QTest::newRow("long s and Kelvin sign")
            << u"#EXTINF:-1 http-u\u017Fer-agent=\"UA\" \u212Aatchup=\"xc\",T"_s;
        QTest::newRow("non-ASCII before an equals sign")
            << u"#EXTINF:-1 新闻=\"1\" tvg-name=\"新闻 1\",新闻"_s;
        QTest::newRow("empty and spaced values")
            << u"#EXTINF:-1 tvg-name=\"\" tvg-id=\"  b  \" x=\"  \",T"_s;
        QTest::newRow("name longer than eight characters inside another")
            << u"#EXTINF:-1 my-http-user-agent=\"no\" http-user-agent=\"yes\",T"_s;
        QTest::newRow("equals at the end") << u"#EXTINF:-1 x="_s;
        QTest::newRow("empty") << QString();
    }

    void chosenLines()
    {
        QFETCH(QString, line);
        compareWithPlainReading(line);
    }

    // The quick trim gives what Qt's does, whichever character stands at either end.
    void trimmingAgreesWithQt()
    {
        for (char32_t c = 0; c <= 0xFFFF; ++c) {
            const QChar character {char16_t(c)};
            for (const QString &text : {QString(character), QString(character) + u"a b"_s,
                                        u"a b"_s + character, character + u"新"_s + character}) {
                if (trimmedText(text) != QStringView(text).trimmed())
                    QFAIL(qPrintable(u"U+%1"_s.arg(uint(c), 4, 16, QChar(u'0'))));
            }
        }
    }

    void randomLines()
    {
        const QStringList pieces {
            u"tvg-name"_s, u"TVG-ID"_s, u"group-title"_s, u"country"_s, u"http-user-agent"_s,
            u"catchup"_s,  u"x"_s,      u"="_s,           u"=\""_s,     u"\""_s,
            u","_s,        u" "_s,      u"a"_s,           u"é"_s,       u"ſ"_s,
            u"\u212A"_s,   u"新闻"_s,   u"-"_s,           u"tvg-"_s,    u"source"_s};
        QRandomGenerator random(20261126);
        for (int i = 0; i < 20000; ++i) {
            QString line = u"#EXTINF:-1 "_s;
            const int count = random.bounded(40);
            for (int k = 0; k < count; ++k)
                line += pieces[random.bounded(int(pieces.size()))];
            compareWithPlainReading(line);
            if (QTest::currentTestFailed()) {
                qWarning("line: %s", qPrintable(line));
                return;
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestExtinfAttributes)
#include "tst_extinfattributes.moc"
