// The channel list's search, menus, country names and row texts, and the index that filters
// large playlists as the user types.
#include "sources/channelfilter.h"
#include "sources/channelindex.h"
#include "sources/playlistparser.h"
#include "sources/playlisttext.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTest>
#include <atomic>
#include <thread>
#include <vector>

namespace {

PlaylistEntry channel(const QString &name, std::optional<QString> group = std::nullopt,
                      std::optional<QString> country = std::nullopt)
{
    return PlaylistEntry(QUuid::createUuid(), name,
                         QUrl(QStringLiteral("http://tv.example/") + QString::number(qHash(name))),
                         std::nullopt, std::move(group), std::move(country));
}

QStringList names(const QList<PlaylistEntry> &entries)
{
    QStringList result;
    for (const PlaylistEntry &entry : entries)
        result.append(entry.name());
    return result;
}

QStringList names(const QList<PlaylistEntry> &playlist, const std::vector<int> &rows)
{
    QStringList result;
    for (int row : rows)
        result.append(playlist.at(row).name());
    return result;
}

const QString news = QStringLiteral("News");

ChannelFilter search(const QString &text)
{
    ChannelFilter filter;
    filter.search = text;
    return filter;
}

} // namespace

class TestChannelFilter : public QObject
{
    Q_OBJECT

private:
    QList<PlaylistEntry> m_playlist {
        channel(QStringLiteral("BBC One"), QStringLiteral("General"), QStringLiteral("GB")),
        channel(QStringLiteral("CNN International"), news, QStringLiteral("US")),
        channel(QStringLiteral("Arte"), QStringLiteral("Culture"), QStringLiteral("FR")),
        channel(QStringLiteral("Euronews"), news),
        channel(QStringLiteral("France 24"), news, QStringLiteral("FR")),
        channel(QStringLiteral("Mystery TV"), std::nullopt, QStringLiteral("XX")),
        channel(QStringLiteral("Local"), QStringLiteral(""), QStringLiteral("us")),
    };

    // Checks the fast index against the rule it stands for.
    void compareWithIndex(const QList<PlaylistEntry> &playlist, const ChannelFilter &filter)
    {
        const ChannelIndex index(playlist);
        QCOMPARE(names(playlist, index.filter(filter)),
                 names(ChannelFilters::filtered(playlist, filter)));
    }

    QStringList filteredNames(const ChannelFilter &filter)
    {
        const QStringList expected = names(ChannelFilters::filtered(m_playlist, filter));
        compareWithIndex(m_playlist, filter);
        return expected;
    }

private Q_SLOTS:
    void countryNamesAreAskedFromManyThreadsAtOnce()
    {
        // The loader's threads build search indexes while the interface paints rows, and all
        // of them ask for country names.
        std::atomic<bool> wrong = false;
        const auto ask = [&wrong](int seed) {
            for (int round = 0; round < 20; ++round) {
                for (int i = 0; i < 2000; ++i) {
                    const int n = (i * 7919 + seed * 104729 + round * 31) % 6000;
                    const QString code = QChar(u'A' + n % 26) + QString::number(n / 26);
                    if (ChannelFilters::countryName(code) != code)
                        wrong = true;
                }
                if (ChannelFilters::countryName(QStringLiteral("FR")) != u"France")
                    wrong = true;
            }
        };
        std::vector<std::thread> threads;
        for (int seed = 1; seed <= 3; ++seed)
            threads.emplace_back(ask, seed);
        ask(0);
        for (std::thread &thread : threads)
            thread.join();
        QVERIFY(!wrong);
    }

    void searchIgnoresLetterCaseAndLooksAtNamesAndGroups()
    {
        QCOMPARE(filteredNames(search(QStringLiteral("bbc"))), QStringList {"BBC One"});
        QCOMPARE(filteredNames(search(QStringLiteral("NEWS"))),
                 (QStringList {"CNN International", "Euronews", "France 24"}));
        // "France" is the country of Arte, but the search never looks at countries.
        QCOMPARE(filteredNames(search(QStringLiteral("france"))), QStringList {"France 24"});
        QCOMPARE(filteredNames(search(QStringLiteral("Great Britain"))), QStringList());
        QCOMPARE(filteredNames(search(QStringLiteral("gb"))), QStringList());
    }

    void searchIgnoresSurroundingSpaces()
    {
        QCOMPARE(filteredNames(search(QStringLiteral("  arte \n"))), QStringList {"Arte"});
        QCOMPARE(filteredNames(search(QStringLiteral("   "))).size(), m_playlist.size());
        QCOMPARE(filteredNames(search(QStringLiteral("\t\n"))).size(), m_playlist.size());
    }

    void theMenusNarrowTheSearchAndKeepPlaylistOrder()
    {
        ChannelFilter filter;
        filter.countryCode = QStringLiteral("FR");
        QCOMPARE(filteredNames(filter), (QStringList {"Arte", "France 24"}));
        filter.category = news;
        QCOMPARE(filteredNames(filter), QStringList {"France 24"});
        filter.search = QStringLiteral("arte");
        QCOMPARE(filteredNames(filter), QStringList());
        filter.category = std::nullopt;
        QCOMPARE(filteredNames(filter), QStringList {"Arte"});
    }

    void aSelectedCountryExcludesChannelsWithout()
    {
        ChannelFilter filter;
        filter.category = news;
        QCOMPARE(filteredNames(filter).size(), 3);
        filter.countryCode = QStringLiteral("US");
        // Euronews has no country; "us" is another code.
        QCOMPARE(filteredNames(filter), QStringList {"CNN International"});
        filter.countryCode = QStringLiteral("DE");
        QCOMPARE(filteredNames(filter), QStringList());
    }

    void codesDifferingInCaseAreSeparateMenuItems()
    {
        const QStringList codes = ChannelFilters::countryCodes(m_playlist);
        QCOMPARE(codes.count(QStringLiteral("US")), 1);
        QCOMPARE(codes.count(QStringLiteral("us")), 1);
        QCOMPARE(codes.size(), 5);
        QCOMPARE(ChannelIndex(m_playlist).countryCodes(), codes);
    }

    void countriesAreSortedByTheirEnglishNames()
    {
        // France, United Kingdom, United States (twice), and XX, which has no name.
        const QStringList codes = ChannelFilters::countryCodes(m_playlist);
        QStringList shown;
        for (const QString &code : codes)
            shown.append(ChannelFilters::countryName(code));
        QCOMPARE(
            shown,
            (QStringList {"France", "United Kingdom", "United States", "United States", "XX"}));
        QCOMPARE(codes.first(), "FR");
    }

    void aCodeWithoutANameIsShownAndSortedAsItself()
    {
        QCOMPARE(ChannelFilters::countryName(QStringLiteral("XX")), "XX");
        QCOMPARE(ChannelFilters::countryName(QStringLiteral("1")), "1");
        QCOMPARE(ChannelFilters::countryName(QString()), QString());
        const QList<PlaylistEntry> playlist {
            channel(QStringLiteral("a"), std::nullopt, QStringLiteral("ZW")),
            channel(QStringLiteral("b"), std::nullopt, QStringLiteral("QQ")),
            channel(QStringLiteral("c"), std::nullopt, QStringLiteral("AT")),
        };
        // Austria, QQ, Zimbabwe.
        QCOMPARE(ChannelFilters::countryCodes(playlist), (QStringList {"AT", "QQ", "ZW"}));
    }

    void countryNamesAreEnglishWhateverTheUsersLanguage()
    {
        const QLocale previous;
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(ChannelFilters::countryName(QStringLiteral("DE")), "Germany");
        QCOMPARE(ChannelFilters::countryName(QStringLiteral("CI")),
                 QString::fromUtf16(u"C\u00f4te d\u2019Ivoire"));
        QLocale::setDefault(previous);
        QCOMPARE(ChannelFilters::countryName(std::optional<QString>()), "Other");
    }

    void accentedNamesSortAmongTheirLetters_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::newRow("C") << QLocale::c();
        QTest::newRow("English") << QLocale(QLocale::English, QLocale::UnitedKingdom);
        QTest::newRow("French") << QLocale(QLocale::French, QLocale::France);
    }

    void accentedNamesSortAmongTheirLetters()
    {
        QFETCH(QLocale, locale);
        const QLocale previous;
        QLocale::setDefault(locale);
        // Colombia, Côte d'Ivoire, Cuba, Czechia.
        const QStringList codes
            = ChannelFilters::sortedByCountryName({QStringLiteral("CZ"), QStringLiteral("CI"),
                                                   QStringLiteral("CU"), QStringLiteral("CO")});
        const QStringList categories = ChannelFilters::sortedCategories(
            {QStringLiteral("family"), QString::fromUtf16(u"Éducation"), QStringLiteral("Economy"),
             QStringLiteral("entertainment")});
        QLocale::setDefault(previous);
        QCOMPARE(codes, (QStringList {"CO", "CI", "CU", "CZ"}));
        QCOMPARE(
            categories,
            (QStringList {"Economy", QString::fromUtf16(u"Éducation"), "entertainment", "family"}));
    }

    void categoriesAreDistinctSortedAndNeverEmpty()
    {
        QList<PlaylistEntry> playlist = m_playlist;
        playlist.append(channel(QStringLiteral("x"), QStringLiteral("culture")));
        playlist.append(channel(QStringLiteral("y"), QStringLiteral(" ")));
        const QStringList categories = ChannelFilters::categories(playlist);
        QCOMPARE(categories.size(), 5);
        // Case-insensitive order; a title of spaces is kept, an empty one is not.
        QCOMPARE(categories.first(), " ");
        QCOMPARE(categories.mid(1, 2).join(QLatin1Char('|')).toLower(), "culture|culture");
        QCOMPARE(categories.mid(3), (QStringList {"General", "News"}));
        QCOMPARE(ChannelIndex(playlist).categories(), categories);
    }

    void theLineUnderTheNameShowsCountryAndGroup()
    {
        using ChannelFilters::metadata;
        QCOMPARE(metadata(QStringLiteral("France"), news),
                 QString::fromUtf16(u"France  \u00b7  News"));
        QCOMPARE(metadata(QStringLiteral("Other"), news), "News");
        QCOMPARE(metadata(QStringLiteral("Other"), std::nullopt), "Other");
        QCOMPARE(metadata(QStringLiteral("France"), QString()), "France");
        QCOMPARE(metadata(QStringLiteral("France"), std::nullopt), "France");
    }

    void theHeaderCountsWhatIsShownOfTheWhole()
    {
        QCOMPARE(ChannelFilters::header(3, 7), QString::fromUtf16(u"IPTV CHANNELS  \u00b7  3 / 7"));
    }

    void theIndexAgreesWithTheRuleOnRealPlaylists()
    {
        const QDir corpus(QStringLiteral(LUMO_CORPUS_DIR "/m3u"));
        if (!corpus.exists())
            QFAIL("the shared playlist corpus is missing beside the repository");
        QRandomGenerator random(7);
        int checked = 0;
        for (const QString &name : corpus.entryList(QDir::Files)) {
            QFile file(corpus.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QList<PlaylistEntry> playlist = PlaylistParser::parse(
                decodePlaylistText(file.readAll()), QUrl::fromLocalFile(file.fileName()));
            if (playlist.isEmpty())
                continue;
            const ChannelIndex index(playlist);
            QCOMPARE(index.countryCodes(), ChannelFilters::countryCodes(playlist));
            QCOMPARE(index.categories(), ChannelFilters::categories(playlist));
            for (int i = 0; i < 6; ++i) {
                // Pieces of real names, in other letter cases, with the menus now and then.
                const PlaylistEntry &sample = playlist.at(random.bounded(int(playlist.size())));
                const QString text = sample.name();
                const int from = text.isEmpty() ? 0 : random.bounded(int(text.size()));
                ChannelFilter filter;
                filter.search = text.mid(from, 1 + random.bounded(4));
                filter.search = i % 2 ? filter.search.toUpper() : filter.search.toLower();
                if (i == 3)
                    filter.countryCode = sample.countryCode();
                if (i == 4)
                    filter.category = sample.groupTitle();
                QCOMPARE(names(playlist, index.filter(filter)),
                         names(ChannelFilters::filtered(playlist, filter)));
                ++checked;
            }
        }
        QVERIFY(checked > 100);
    }

    void searchesThatLookLikeTheIndexMarksStillMatchExactly()
    {
        QList<PlaylistEntry> playlist = m_playlist;
        playlist.append(channel(QString::fromUtf16(u"odd\u0001name"), QStringLiteral("x")));
        compareWithIndex(playlist, search(QString::fromUtf16(u"\u0001")));
        compareWithIndex(playlist, search(QString::fromUtf16(u"d\u0001n")));
        compareWithIndex(playlist, search(QString::fromUtf16(u"e\u0000")));
        QCOMPARE(ChannelIndex(playlist).filter(search(QString::fromUtf16(u"d\u0001n"))).size(),
                 size_t(1));
    }

    void narrowingASearchFindsWhatAFreshSearchFinds()
    {
        QFile file(QStringLiteral(LUMO_CORPUS_DIR "/m3u/iptv-org_iptv__index.m3u"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<PlaylistEntry> playlist = PlaylistParser::parse(
            decodePlaylistText(file.readAll()), QUrl::fromLocalFile(file.fileName()));
        const ChannelIndex index(playlist);
        ChannelFilter filter;
        std::vector<int> rows = index.filter(filter);
        for (const QString &typed : {QStringLiteral("t"), QStringLiteral("tv"),
                                     QStringLiteral("tv "), QStringLiteral("TV 1")}) {
            filter.search = typed;
            rows = index.narrow(rows, filter);
            QCOMPARE(rows, index.filter(filter));
        }
        QVERIFY(!index.filter(search(QStringLiteral("t"))).empty());
    }

    void matchesNeverCrossFromOneChannelToTheNext()
    {
        const QList<PlaylistEntry> playlist {channel(QStringLiteral("ab")),
                                             channel(QStringLiteral("cd"), QStringLiteral("ef"))};
        QCOMPARE(ChannelIndex(playlist).filter(search(QStringLiteral("bc"))).size(), size_t(0));
        QCOMPARE(ChannelIndex(playlist).filter(search(QStringLiteral("de"))).size(), size_t(0));
        QCOMPARE(ChannelIndex(playlist).filter(search(QStringLiteral("ef"))), std::vector<int> {1});
        QCOMPARE(ChannelIndex().filter(search(QStringLiteral("a"))).size(), size_t(0));
    }

    void anIndexBuildIsGivenUpWhenStopped()
    {
        QVERIFY(ChannelIndex::build(m_playlist, {}));
        QCOMPARE(ChannelIndex::build(m_playlist, {})->countryCodes(),
                 ChannelIndex(m_playlist).countryCodes());
        std::stop_source stop;
        stop.request_stop();
        QVERIFY(!ChannelIndex::build(m_playlist, stop.get_token()));
    }
};

QTEST_APPLESS_MAIN(TestChannelFilter)
#include "tst_channelfilter.moc"
