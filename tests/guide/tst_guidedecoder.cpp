// Guides packed with gzip or xz, or not packed, told by their first bytes and unpacked as they
// come, in chunks of any size; damaged and cut-short streams keep what came.
#include "guide/guidedecoder.h"

#include <QProcess>
#include <QTest>

namespace {
// The bytes a packing tool makes of input (gzip -c, xz -c).
QByteArray packed(const QString &tool, const QByteArray &input)
{
    QProcess process;
    process.start(tool, {QStringLiteral("-c")});
    process.waitForStarted();
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(30000);
    return process.readAllStandardOutput();
}

QByteArray unpackInChunks(GuideDecoder &decoder, const QByteArray &bytes, qsizetype chunk)
{
    QByteArray out;
    for (qsizetype at = 0; at < bytes.size(); at += chunk)
        out += decoder.feed(QByteArrayView(bytes).sliced(at, std::min(chunk, bytes.size() - at)));
    out += decoder.finish();
    return out;
}

QByteArray sampleGuide()
{
    QByteArray text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tv>\n";
    for (int i = 0; i < 5000; ++i)
        text += "<programme start=\"20241125" + QByteArray::number(100000 + i).right(4)
            + "00 +0000\" channel=\"c" + QByteArray::number(i % 7) + "\"><title>Show "
            + QByteArray::number(i) + "</title></programme>\n";
    return text + "</tv>\n";
}
} // namespace

class TestGuideDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formatsAreToldByTheirBytes_data()
    {
        QTest::addColumn<QString>("tool"); // empty: plain
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("chunk");
        for (const int chunk : {1, 7, 4096, 1 << 20}) {
            QTest::addRow("plain, chunks of %d", chunk)
                << QString() << int(GuideDecoder::Format::plain) << chunk;
            QTest::addRow("gzip, chunks of %d", chunk)
                << QStringLiteral("gzip") << int(GuideDecoder::Format::gzip) << chunk;
            QTest::addRow("xz, chunks of %d", chunk)
                << QStringLiteral("xz") << int(GuideDecoder::Format::xz) << chunk;
        }
    }

    void formatsAreToldByTheirBytes()
    {
        QFETCH(QString, tool);
        QFETCH(int, format);
        QFETCH(int, chunk);
        const QByteArray guide = sampleGuide();
        const QByteArray input = tool.isEmpty() ? guide : packed(tool, guide);
        QVERIFY(!input.isEmpty());
        GuideDecoder decoder;
        QCOMPARE(unpackInChunks(decoder, input, chunk), guide);
        QCOMPARE(int(decoder.format()), format);
        QVERIFY(!decoder.failed());
        QVERIFY(!decoder.truncated());
        QCOMPARE(decoder.unpackedBytes(), qint64(guide.size()));
    }

    void membersOneAfterAnotherAllCount()
    {
        const QByteArray first = "<tv><channel id=\"a\"/>";
        const QByteArray second = "<channel id=\"b\"/></tv>";
        for (const QString &tool : {QStringLiteral("gzip"), QStringLiteral("xz")}) {
            GuideDecoder decoder;
            QCOMPARE(unpackInChunks(decoder, packed(tool, first) + packed(tool, second), 5),
                     first + second);
            QVERIFY(!decoder.truncated());
        }
    }

    void aCutShortStreamKeepsWhatCame()
    {
        const QByteArray guide = sampleGuide();
        for (const QString &tool : {QStringLiteral("gzip"), QStringLiteral("xz")}) {
            const QByteArray whole = packed(tool, guide);
            GuideDecoder decoder;
            const QByteArray out = unpackInChunks(decoder, whole.left(whole.size() / 2), 4096);
            QVERIFY(decoder.truncated());
            QVERIFY(!out.isEmpty());
            QVERIFY(guide.startsWith(out));
        }
    }

    void damagedBytesStopTheStream()
    {
        QByteArray whole = packed(QStringLiteral("gzip"), sampleGuide());
        // The deflate data after the header, overwritten.
        for (qsizetype i = 20; i < 200; ++i)
            whole[i] = char(0xff);
        GuideDecoder decoder;
        unpackInChunks(decoder, whole, 4096);
        QVERIFY(decoder.failed());
        // Nothing more comes once failed.
        QVERIFY(decoder.feed("more").isEmpty());
    }

    void aTinyInputIsPlain()
    {
        GuideDecoder decoder;
        QCOMPARE(unpackInChunks(decoder, QByteArray("\x1f"), 1), QByteArray("\x1f"));
        QCOMPARE(decoder.format(), GuideDecoder::Format::plain);
        GuideDecoder empty;
        QVERIFY(unpackInChunks(empty, {}, 1).isEmpty());
    }

    // 64 MB of spaces pack into about 64 KB of gzip (and far less xz): handed over whole, one
    // chunk would unpack into 64 MB at once.
    void aSmallChunkThatUnpacksToMuchComesInBlocks_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::newRow("gzip") << QStringLiteral("gzip");
        QTest::newRow("xz") << QStringLiteral("xz");
    }
    void aSmallChunkThatUnpacksToMuchComesInBlocks()
    {
        QFETCH(QString, tool);
        const QByteArray bomb = packed(tool, QByteArray(64 << 20, ' '));
        QVERIFY(bomb.size() < 1 << 20);
        GuideDecoder decoder;
        qsizetype largest = 0;
        qint64 taken = 0;
        // The sink stops the unpacking after 8 MB.
        const bool finished = decoder.feed(bomb, [&](QByteArrayView block) {
            largest = std::max(largest, block.size());
            taken += block.size();
            return taken < (8 << 20);
        });
        QVERIFY(!finished);
        QVERIFY2(largest <= 256 * 1024, qPrintable(QString::number(largest)));
        QVERIFY(taken >= 8 << 20);
        QVERIFY(taken < 9 << 20);
    }
};

QTEST_GUILESS_MAIN(TestGuideDecoder)
#include "tst_guidedecoder.moc"
