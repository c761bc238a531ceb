// The channel list on a playlist loaded from a real local server: the header, search and menus,
// numbered rows, logos fetched only for rows on screen, and a click that plays a channel.
#include "httpserver/localhttpserver.h"
#include "model/playermodel.h"
#include "scriptedmediaplayer.h"
#include "ui/channellist.h"
#include "ui/channellistmodel.h"
#include "ui/channellogocache.h"
#include "ui/channelrowdelegate.h"
#include "ui/filtermenubutton.h"

#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>

namespace {

constexpr int channelCount = 300;

struct Channel
{
    QString name;
    QString group;
    QString country;
};

// Three hand-made channels, then numbered fillers.
Channel channelAt(int i)
{
    switch (i) {
    case 0:
        return {QStringLiteral("Arte"), QStringLiteral("Culture"), QStringLiteral("FR")};
    case 1:
        return {QStringLiteral("World NEWS Now"), QStringLiteral("News"), QStringLiteral("US")};
    case 2:
        return {QStringLiteral("Nowhere TV"), QString(), QString()};
    default:
        return {QStringLiteral("Channel %1").arg(i), i % 2 ? QStringLiteral("Music") : QString(),
                i % 3 ? QStringLiteral("DE") : QStringLiteral("us")};
    }
}

QByteArray png(const QColor &colour)
{
    QImage image(64, 40, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

} // namespace

class TestChannelList : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<LocalHttpServer> m_server;
    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<ChannelList> m_list;

    ScriptedMediaPlayer &player() { return static_cast<ScriptedMediaPlayer &>(m_model->player()); }
    int logoRequests()
    {
        int count = 0;
        for (int i = 0; i < channelCount; ++i)
            count += m_server->requestCount(QStringLiteral("/logos/%1.png").arg(i));
        return count;
    }
    QStringList shownNames()
    {
        QStringList names;
        ChannelListModel *rows = m_list->listModel();
        for (int row = 0; row < rows->rowCount(); ++row)
            names.append(rows->index(row).data().toString());
        return names;
    }
    QList<QAction *> openMenu(FilterMenuButton *button)
    {
        Q_EMIT button->menu()->aboutToShow();
        return button->menu()->actions();
    }
    QAction *item(FilterMenuButton *button, const QString &title)
    {
        for (QAction *action : openMenu(button))
            if (action->text() == title)
                return action;
        return nullptr;
    }

private Q_SLOTS:
    void init()
    {
        // A fresh server for each case, so that request counts start at zero.
        m_server = std::make_unique<LocalHttpServer>();
        QVERIFY(m_server->listen());
        QByteArray playlist = "#EXTM3U\r\n";
        for (int i = 0; i < channelCount; ++i) {
            const Channel channel = channelAt(i);
            playlist += "#EXTINF:-1 tvg-logo=\""
                + m_server->url(QStringLiteral("/logos/%1.png").arg(i)).toEncoded() + "\"";
            if (!channel.group.isEmpty())
                playlist += " group-title=\"" + channel.group.toUtf8() + "\"";
            if (!channel.country.isEmpty())
                playlist += " tvg-country=\"" + channel.country.toUtf8() + "\"";
            playlist += "," + channel.name.toUtf8() + "\r\n/streams/" + QByteArray::number(i)
                + ".m3u8\r\n";
            // Channel 1's logo is missing; the others are red.
            if (i != 1)
                m_server->route(QStringLiteral("/logos/%1.png").arg(i),
                                HttpResponse::text(png(Qt::red), "image/png"));
        }
        m_server->route(QStringLiteral("/list.m3u"), HttpResponse::text(playlist));

        m_model = std::make_unique<PlayerModel>(std::make_unique<ScriptedMediaPlayer>());
        m_list = std::make_unique<ChannelList>(*m_model);
        m_list->resize(245, 420);
        m_list->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_list.get()));
        m_model->openRemote(m_server->url(QStringLiteral("/list.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), channelCount, 10000);
    }

    void cleanup()
    {
        m_list.reset();
        m_model.reset();
        m_server.reset();
    }

    void theHeaderCountsShownChannelsOfAll()
    {
        QCOMPARE(m_list->headerText(), QString::fromUtf16(u"IPTV CHANNELS  \u00b7  300 / 300"));
        QCOMPARE(m_list->searchField()->placeholderText(), "Search channels");
        m_list->setSearch(QStringLiteral("now"));
        // "World NEWS Now" and "Nowhere TV".
        QCOMPARE(m_list->headerText(), QString::fromUtf16(u"IPTV CHANNELS  \u00b7  2 / 300"));
    }

    void searchMenusAndHeaderCombine()
    {
        QTest::keyClicks(m_list->searchField(), QStringLiteral(" CHANNEL 1"));
        // Channel 10–19 and 100–199.
        QCOMPARE(m_list->listModel()->rowCount(), 110);
        m_list->setCountryCode(QStringLiteral("DE"));
        const int german = m_list->listModel()->rowCount();
        QVERIFY(german > 0 && german < 110);
        m_list->setCategory(QStringLiteral("Music"));
        const int germanMusic = m_list->listModel()->rowCount();
        QVERIFY(germanMusic > 0 && germanMusic < german);
        QCOMPARE(m_list->headerText(),
                 QString::fromUtf16(u"IPTV CHANNELS  \u00b7  %1 / 300").arg(germanMusic));
        for (int row = 0; row < germanMusic; ++row) {
            const PlaylistEntry &entry = m_list->listModel()->entry(row);
            QCOMPARE(entry.countryCode(), "DE");
            QCOMPARE(entry.groupTitle(), "Music");
            QVERIFY(entry.name().startsWith(QLatin1String("Channel 1")));
        }
        // The search stays when a menu changes, and the menus when the search does.
        QCOMPARE(m_list->searchField()->text(), " CHANNEL 1");
        m_list->setSearch(QString());
        QCOMPARE(m_list->filter().countryCode, "DE");
        QCOMPARE(m_list->filter().category, "Music");
    }

    void aGroupMatchesTheSearchButACountryNeverDoes()
    {
        m_list->setSearch(QStringLiteral("culture"));
        QCOMPARE(shownNames(), QStringList {"Arte"});
        m_list->setSearch(QStringLiteral("France"));
        QCOMPARE(shownNames(), QStringList());
    }

    void rowsAreNumberedInTheFilteredOrder()
    {
        ChannelListModel *rows = m_list->listModel();
        QCOMPARE(rows->index(0).data(ChannelListModel::NumberRole).toInt(), 1);
        QCOMPARE(rows->index(2).data().toString(), "Nowhere TV");
        m_list->setSearch(QStringLiteral("now"));
        QCOMPARE(shownNames(), (QStringList {"World NEWS Now", "Nowhere TV"}));
        QCOMPARE(rows->index(0).data(ChannelListModel::NumberRole).toInt(), 1);
        QCOMPARE(rows->index(1).data(ChannelListModel::NumberRole).toInt(), 2);
    }

    void rowsShowCountryAndGroupAndOfferToPlay()
    {
        ChannelListModel *rows = m_list->listModel();
        QCOMPARE(rows->index(0).data(ChannelListModel::MetadataRole).toString(),
                 QString::fromUtf16(u"France  \u00b7  Culture"));
        QCOMPARE(rows->index(2).data(ChannelListModel::MetadataRole).toString(), "Other");
        QCOMPARE(rows->index(0).data(Qt::ToolTipRole).toString(), "Play Arte");
    }

    void theMenusListCountriesAndCategories()
    {
        QCOMPARE(m_list->countryMenuTitle(), "Countries");
        QCOMPARE(m_list->categoryMenuTitle(), "Category");
        QCOMPARE(m_list->countryButton()->height(), FilterMenuButton::buttonHeight);
        const QList<QAction *> countries = openMenu(m_list->countryButton());
        QStringList titles;
        for (QAction *action : countries)
            titles.append(action->isSeparator() ? QStringLiteral("-") : action->text());
        // Codes are upper-cased when read, so "us" and "US" are one country.
        QCOMPARE(titles, (QStringList {"Countries", "-", "France", "Germany", "United States"}));
        QCOMPARE(countries.at(0)->property("symbol"), "checkmark");
        QCOMPARE(countries.at(2)->property("symbol"), "tv");

        item(m_list->countryButton(), QStringLiteral("Germany"))->trigger();
        QCOMPARE(m_list->filter().countryCode, "DE");
        QCOMPARE(m_list->countryMenuTitle(), "Germany");
        QCOMPARE(item(m_list->countryButton(), QStringLiteral("Countries"))->property("symbol"),
                 "globe");
        QCOMPARE(item(m_list->countryButton(), QStringLiteral("Germany"))->property("symbol"),
                 "checkmark");

        const QList<QAction *> categories = openMenu(m_list->categoryButton());
        QCOMPARE(categories.size(), 5); // Category, divider, Culture, Music, News
        QCOMPARE(categories.at(2)->text(), "Culture");
        item(m_list->categoryButton(), QStringLiteral("News"))->trigger();
        QCOMPARE(m_list->categoryMenuTitle(), "News");
        // Germany has no news.
        QCOMPARE(m_list->listModel()->rowCount(), 0);
        item(m_list->categoryButton(), QStringLiteral("Category"))->trigger();
        item(m_list->countryButton(), QStringLiteral("Countries"))->trigger();
        QCOMPARE(m_list->listModel()->rowCount(), channelCount);
    }

    void menuTitlesShowTheirAmpersands()
    {
        m_server->route(QStringLiteral("/amp.m3u"),
                        HttpResponse::text("#EXTM3U\n"
                                           "#EXTINF:-1 tvg-country=\"BA\" group-title=\"News & "
                                           "Weather\",Federalna\nhttp://127.0.0.1:9/ba.m3u8\n"
                                           "#EXTINF:-1 tvg-country=\"TT\",TTT\n"
                                           "http://127.0.0.1:9/tt.m3u8\n"));
        m_model->openRemote(m_server->url(QStringLiteral("/amp.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 2, 10000);
        // What a menu shows of an action is its text with the mnemonic marks taken out.
        const auto shown = [this](FilterMenuButton *button) {
            QStringList titles;
            for (QAction *action : openMenu(button))
                if (!action->isSeparator())
                    titles.append(action->iconText());
            return titles;
        };
        QCOMPARE(shown(m_list->countryButton()),
                 (QStringList {"Countries", "Bosnia & Herzegovina", "Trinidad & Tobago"}));
        QCOMPARE(shown(m_list->categoryButton()), (QStringList {"Category", "News & Weather"}));
        openMenu(m_list->categoryButton()).constLast()->trigger();
        QCOMPARE(m_list->filter().category, "News & Weather");
        QCOMPARE(m_list->categoryMenuTitle(), "News & Weather");
        openMenu(m_list->countryButton()).at(2)->trigger();
        QCOMPARE(m_list->filter().countryCode, "BA");
        QCOMPARE(m_list->countryMenuTitle(), "Bosnia & Herzegovina");
    }

    void aListOpenedFromAChannelLeadsBack()
    {
        QVERIFY(!m_list->backButton()->isVisible());
        m_server->route(
            QStringLiteral("/nested.m3u"),
            HttpResponse::text("#EXTM3U\n#EXTINF:-1,Inner One\nhttp://127.0.0.1:9/1.ts\n"
                               "#EXTINF:-1,Inner Two\nhttp://127.0.0.1:9/2.ts\n"));
        // The channel's address answered with a channel list, as the player tells.
        Q_EMIT player().channelListFound(m_server->url(QStringLiteral("/nested.m3u")));
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 2, 10000);
        QCOMPARE(shownNames(), (QStringList {"Inner One", "Inner Two"}));
        QVERIFY(m_list->backButton()->isVisible());
        QCOMPARE(m_list->backButton()->text(), QString::fromUtf8("\u2039 Back"));
        QTest::mouseClick(m_list->backButton(), Qt::LeftButton);
        QCOMPARE(m_model->playlist().size(), channelCount);
        QVERIFY(!m_list->backButton()->isVisible());
        QCOMPARE(m_list->listModel()->rowCount(), channelCount);
    }

    void theSearchsClearButtonGoesWithItsText()
    {
        QLineEdit *search = m_list->searchField();
        QToolButton *clear = search->findChild<QToolButton *>();
        QVERIFY(clear);
        // Shown while there is text, whatever empties it.
        const auto shown = [clear] {
            return clear->isVisible() && clear->property("opacity").toDouble() > 0.5;
        };
        QTest::keyClicks(search, QStringLiteral("arte"));
        QTRY_VERIFY(shown());
        m_list->resetFilters();
        QCOMPARE(search->text(), QString());
        QTRY_VERIFY(!shown());
        QTest::qWait(400);
        QVERIFY(!shown());
        QCOMPARE(m_list->listModel()->rowCount(), channelCount);
    }

    void resettingEmptiesTheSearchAndLiftsTheMenus()
    {
        m_list->setSearch(QStringLiteral("arte"));
        m_list->setCountryCode(QStringLiteral("FR"));
        m_list->setCategory(QStringLiteral("Culture"));
        m_list->resetFilters();
        QCOMPARE(m_list->searchField()->text(), QString());
        QCOMPARE(m_list->filter(), ChannelFilter());
        QCOMPARE(m_list->listModel()->rowCount(), channelCount);
    }

    void aClickPlaysTheChannelAsALiveStream()
    {
        m_list->setSearch(QStringLiteral("arte"));
        QListView *view = m_list->listView();
        const QRect row = view->visualRect(m_list->listModel()->index(0));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, row.center());
        QVERIFY(!player().items.isEmpty());
        QCOMPARE(player().items.constLast(), m_server->url(QStringLiteral("/streams/0.m3u8")));
        QCOMPARE(m_model->title(), "Arte");
        QVERIFY(m_model->isLiveStream());
    }

    void thePageKeysZapThroughTheShownChannels()
    {
        m_list->setSearch(QStringLiteral("channel 29"));
        m_list->setCountryCode(QStringLiteral("US"));
        QCOMPARE(shownNames(), (QStringList {"Channel 291", "Channel 294", "Channel 297"}));
        const auto stream = [&](int channel) {
            return m_server->url(QStringLiteral("/streams/%1.m3u8").arg(channel));
        };
        QListView *view = m_list->listView();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                          view->visualRect(m_list->listModel()->index(1)).center());
        QCOMPARE(player().items.constLast(), stream(294));
        // The next row is chosen at once and opened when no other step follows.
        qsizetype opened = player().items.size();
        m_list->stepChannel(1);
        QCOMPARE(view->currentIndex().row(), 2);
        QCOMPARE(player().items.size(), opened);
        QTRY_COMPARE(player().items.constLast(), stream(297));
        QCOMPARE(m_model->title(), QStringLiteral("Channel 297"));
        QVERIFY(m_model->isLiveStream());
        // Wrapping at both ends.
        m_list->stepChannel(1);
        QTRY_COMPARE(player().items.constLast(), stream(291));
        m_list->stepChannel(-1);
        QTRY_COMPARE(player().items.constLast(), stream(297));
        // A channel that is not shown: next is the first row, previous the last.
        m_model->playChannel(m_model->playlist().at(0));
        m_list->stepChannel(1);
        QTRY_COMPARE(player().items.constLast(), stream(291));
        m_model->playChannel(m_model->playlist().at(0));
        m_list->stepChannel(-1);
        QTRY_COMPARE(player().items.constLast(), stream(297));
        // Ten quick steps open one stream, the last one stepped to.
        QTest::qWait(ChannelList::zapDelayMs + 100);
        opened = player().items.size();
        for (int press = 0; press < 10; ++press) {
            m_list->stepChannel(1);
            QTest::qWait(90);
        }
        QTRY_COMPARE(player().items.size(), opened + 1);
        // From 297 (the last row) ten rows on is the first row.
        QCOMPARE(player().items.constLast(), stream(291));
        QTest::qWait(ChannelList::zapDelayMs * 2);
        QCOMPARE(player().items.size(), opened + 1);
    }

    void channelsOnlyPlayOverTheNetwork()
    {
        // A downloaded list may name anything the player could open; a click only plays
        // network streams.
        m_server->route(QStringLiteral("/hostile.m3u"),
                        HttpResponse::text("#EXTM3U\n#EXTINF:-1,File\nfile:///etc/hostname\n"
                                           "#EXTINF:-1,Lavfi\nav://lavfi:0\n"
                                           "#EXTINF:-1,Lavf\nlavf://file:///etc/hostname\n"
                                           "#EXTINF:-1,Edl\nedl:///etc/hostname\n"
                                           "#EXTINF:-1,Fd\nfd://0\n"
                                           "#EXTINF:-1,Memory\nmemory://secret\n"
                                           "#EXTINF:-1,Good\nhttp://127.0.0.1:9/good.m3u8\n"
                                           "#EXTINF:-1,Rtsp\nrtsp://127.0.0.1:9/cam\n"));
        m_model->openRemote(m_server->url(QStringLiteral("/hostile.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), 8, 10000);
        QListView *view = m_list->listView();
        const auto click = [&](int row) {
            const QRect rect = view->visualRect(m_list->listModel()->index(row));
            QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, rect.center());
        };
        for (int row = 0; row < 6; ++row) {
            click(row);
            QVERIFY2(player().items.isEmpty(), qPrintable(m_model->playlist()[row].name()));
            QCOMPARE(m_model->errorMessage(), "Enter a valid HTTP or HTTPS address.");
            QVERIFY(!m_model->isPlaying());
        }
        click(6);
        QCOMPARE(player().items.size(), 1);
        QCOMPARE(player().items.constLast(), QUrl(QStringLiteral("http://127.0.0.1:9/good.m3u8")));
        QVERIFY(m_model->errorMessage().isNull());
        QCOMPARE(m_model->title(), "Good");
        click(7);
        QCOMPARE(player().items.size(), 2);
    }

    void logosAreFetchedOnlyForRowsOnScreen()
    {
        QListView *view = m_list->listView();
        const int rowsOnScreen = view->viewport()->height()
                / (ChannelRowDelegate::rowHeight + ChannelRowDelegate::rowSpacing)
            + 2;
        QTRY_VERIFY2_WITH_TIMEOUT(logoRequests() >= rowsOnScreen - 2,
                                  qPrintable(QStringLiteral("%1 of %2 logos asked for, %3 started")
                                                 .arg(logoRequests())
                                                 .arg(rowsOnScreen)
                                                 .arg(m_list->logos()->downloadsStarted())),
                                  10000);
        QTest::qWait(300);
        QVERIFY2(logoRequests() <= rowsOnScreen, qPrintable(QString::number(logoRequests())));

        // The first row shows its red logo; the second, whose logo is missing, keeps the
        // television symbol and its number.
        const QImage picture = view->viewport()->grab().toImage();
        const QRect first = view->visualRect(m_list->listModel()->index(0));
        const QPoint logoCentre(first.left() + 7 + ChannelRowDelegate::logoWidth / 2,
                                first.top()
                                    + (first.height() - ChannelRowDelegate::rowSpacing) / 2);
        const QColor logo = picture.pixelColor(logoCentre * picture.devicePixelRatio());
        QVERIFY2(logo.red() > 200 && logo.green() < 60, qPrintable(logo.name()));
        const QRect second = view->visualRect(m_list->listModel()->index(1));
        const QColor placeholder
            = picture.pixelColor(QPoint(logoCentre.x(), logoCentre.y() + second.top() - first.top())
                                 * picture.devicePixelRatio());
        QVERIFY2(placeholder.red() < 200 || placeholder.green() > 60,
                 qPrintable(placeholder.name()));

        // Scrolling to the end fetches the last rows' logos, not those in between.
        const int before = logoRequests();
        view->scrollToBottom();
        QTRY_VERIFY_WITH_TIMEOUT(
            m_server->requestCount(QStringLiteral("/logos/%1.png").arg(channelCount - 1)) == 1,
            10000);
        QTest::qWait(300);
        QVERIFY(logoRequests() - before <= rowsOnScreen);
        QCOMPARE(m_server->requestCount(QStringLiteral("/logos/150.png")), 0);
    }

    void filteringKeepsTheViewAndMakesNoWidgetPerRow()
    {
        QListView *view = m_list->listView();
        QWidget *viewport = view->viewport();
        const qsizetype widgets = m_list->findChildren<QWidget *>().size();
        for (const QString &text : {QStringLiteral("c"), QStringLiteral("ch"), QString()})
            m_list->setSearch(text);
        QCOMPARE(view->viewport(), viewport);
        QCOMPARE(m_list->findChildren<QWidget *>().size(), widgets);
        QVERIFY(widgets < 40);
    }

    void theListSearchesTheIndexLoadedWithThePlaylist()
    {
        // Built with the parse, off the interface thread, and never again by the list.
        QVERIFY(m_model->channelIndex());
        QCOMPARE(&m_list->listModel()->channelIndex(), m_model->channelIndex().get());
        QCOMPARE(m_list->listModel()->playlist(), m_model->playlist());
    }

    void aLongListCanBeScrolledToItsLastChannel()
    {
        // Long lists are laid out a part at a time; the whole list is there all the same.
        constexpr int longCount = 25'000;
        QByteArray playlist = "#EXTM3U\n";
        for (int i = 0; i < longCount; ++i)
            playlist += "#EXTINF:-1,Long " + QByteArray::number(i) + "\nhttp://a/"
                + QByteArray::number(i) + "\n";
        m_server->route(QStringLiteral("/long.m3u"), HttpResponse::text(playlist));
        m_model->openRemote(m_server->url(QStringLiteral("/long.m3u")).toString(), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(m_model->playlist().size(), longCount, 10000);
        QListView *view = m_list->listView();
        const auto lastRowShown = [&] {
            view->scrollToBottom();
            const QModelIndex bottom = view->indexAt(
                QPoint(view->viewport()->width() / 2, view->viewport()->height() - 4));
            return bottom.isValid() ? bottom.data().toString() : QString();
        };
        QTRY_COMPARE_WITH_TIMEOUT(lastRowShown(), QStringLiteral("Long 24999"), 5000);
        QCOMPARE(view->verticalScrollBar()->value(), view->verticalScrollBar()->maximum());
        m_list->setSearch(QStringLiteral("long 1249"));
        QCOMPARE(m_list->listModel()->rowCount(), 11);
    }

    void aNewPlaylistReplacesTheRowsAndAnEmptyOneShowsNone()
    {
        m_list->setSearch(QStringLiteral("arte"));
        m_model->clearNetworkStream();
        QCOMPARE(m_list->listModel()->rowCount(), 0);
        QCOMPARE(m_list->headerText(), QString::fromUtf16(u"IPTV CHANNELS  \u00b7  0 / 0"));
    }
};

QTEST_MAIN(TestChannelList)
#include "tst_channellist.moc"
