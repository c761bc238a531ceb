#pragma once
// The lower part of the sidebar, shown while a playlist is loaded: the count header, the search
// field, the country and category menus and the numbered channel rows. A click on a row plays
// that channel as a live stream.
#include "sources/channelfilter.h"

#include <QTimer>
#include <QWidget>

class ChannelListModel;
class ChannelLogoCache;
class FilterMenuButton;
class PlayerModel;
class ProgrammeList;
class QLabel;
class QStackedLayout;
class QLineEdit;
class QListView;
class QToolButton;

class ChannelList final : public QWidget
{
    Q_OBJECT

public:
    explicit ChannelList(PlayerModel &model, QWidget *parent = nullptr);

    const ChannelFilter &filter() const;
    void setSearch(const QString &text);
    void setCountryCode(const std::optional<QString> &code);
    void setCategory(const std::optional<QString> &category);
    // Empties the search and lifts both menus' choices.
    void resetFilters();
    // Moves to the row after (+1) or before (-1) the playing channel's among those shown,
    // wrapping, and plays it once no further step has come for zapDelayMs.
    void stepChannel(int step);
    static constexpr int zapDelayMs = 300;

    QString headerText() const;
    QString countryMenuTitle() const;
    QString categoryMenuTitle() const;

    QLineEdit *searchField() const { return m_search; }
    QListView *listView() const { return m_list; }
    ChannelListModel *listModel() const { return m_model; }
    FilterMenuButton *countryButton() const { return m_countryButton; }
    FilterMenuButton *categoryButton() const { return m_categoryButton; }
    // "‹ Back", shown while the list was opened from a channel of another.
    QToolButton *backButton() const { return m_backButton; }
    ChannelLogoCache *logos() const { return m_logos; }

    // "Programmes" of the channel at this shown row, over the list, while a guide is loaded or
    // the channel has an archive; otherwise nothing happens.
    void openProgrammes(int row);
    void closeProgrammes();
    bool showsProgrammes() const;
    ProgrammeList *programmeList() const { return m_programmes; }

protected:
    // Return on the list plays its current row.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showPlaylist();
    void applyFilter(const ChannelFilter &filter);
    void updateHeader();
    void fillCountryMenu();
    void fillCategoryMenu();
    void play(const QModelIndex &index);
    // The shown row of the channel playing now.
    std::optional<int> playingRow() const;

    PlayerModel &m_player;
    ChannelListModel *m_model = nullptr;
    ChannelLogoCache *m_logos = nullptr;
    QLabel *m_header = nullptr;
    QLineEdit *m_search = nullptr;
    FilterMenuButton *m_countryButton = nullptr;
    FilterMenuButton *m_categoryButton = nullptr;
    QTimer m_zapTask; // opens the row stepped to once the steps stop
    QListView *m_list = nullptr;
    QToolButton *m_backButton = nullptr;
    QStackedLayout *m_pages = nullptr; // the channels, or a channel's programmes
    QWidget *m_channelsPage = nullptr;
    ProgrammeList *m_programmes = nullptr;
    bool m_resettingFilters = false;
};
