// Which guide channel a playlist entry belongs to, and how the channels of several guides merge.
#include "guide/guidechannels.h"

#include <QTest>

class TestGuideChannels : public QObject
{
    Q_OBJECT

private:
    static GuideChannels sample()
    {
        return GuideChannels({
            {{"bbc1.uk", {"BBC One", "BBC 1"}}, {"Arte.fr", {"Arte"}}, {"news", {"World News"}}},
            // A second guide: its "bbc1.uk" names are not taken; its new channel is.
            {{"bbc1.uk", {"Other Name"}}, {"cnn.us", {"CNN International"}}},
        });
    }

private Q_SLOTS:
    void merging()
    {
        const GuideChannels channels = sample();
        QCOMPARE(channels.channels().size(), size_t(4));
        QCOMPARE(channels.channels()[0].displayNames, QStringList({"BBC One", "BBC 1"}));
        QCOMPARE(channels.channels()[3].id, QStringLiteral("cnn.us"));
    }

    void rulesInOrder_data()
    {
        QTest::addColumn<QString>("tvgId");
        QTest::addColumn<QString>("tvgName");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("channel"); // -1: none

        QTest::newRow("id") << "Arte.fr"
                            << ""
                            << "" << 1;
        QTest::newRow("id ignoring case") << "ARTE.FR"
                                          << ""
                                          << "" << 1;
        QTest::newRow("an exact id wins over a name") << "news"
                                                      << "BBC One"
                                                      << "" << 2;
        QTest::newRow("an unknown id falls through to the name") << "nothing"
                                                                 << "BBC 1"
                                                                 << "" << 0;
        QTest::newRow("tvg-name with underscores") << ""
                                                   << "World_News"
                                                   << "" << 2;
        QTest::newRow("tvg-name is matched exactly") << ""
                                                     << "bbc one"
                                                     << "" << -1;
        QTest::newRow("the entry's name ignoring case") << ""
                                                        << ""
                                                        << "cnn INTERNATIONAL" << 3;
        QTest::newRow("a later guide's names for a known id count for nothing")
            << ""
            << "Other Name"
            << "Other Name" << -1;
        QTest::newRow("nothing") << ""
                                 << ""
                                 << "" << -1;
    }

    void rulesInOrder()
    {
        QFETCH(QString, tvgId);
        QFETCH(QString, tvgName);
        QFETCH(QString, name);
        QFETCH(int, channel);
        const std::optional<int> found = sample().match(tvgId, tvgName, name);
        QCOMPARE(found, channel < 0 ? std::nullopt : std::optional(channel));
    }

    void severalEntriesShareAChannel()
    {
        const GuideChannels channels = sample();
        QCOMPARE(channels.match("bbc1.uk", {}, {}), channels.match({}, "BBC One", {}));
        QCOMPARE(channels.match({}, {}, "bbc 1"), std::optional(0));
    }
};

QTEST_GUILESS_MAIN(TestGuideChannels)
#include "tst_guidechannels.moc"
