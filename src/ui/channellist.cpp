#include "channellist.h"

#include "channellistmodel.h"
#include "channellogocache.h"
#include "channelrowdelegate.h"
#include "filtermenubutton.h"
#include "keyboardreach.h"
#include "model/playermodel.h"
#include "programmelist.h"
#include "sources/channelstep.h"
#include "surface/icons.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QScopedValueRollback>
#include <QStackedLayout>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// Letters are the player's keys (F, M, J, V): the list never searches its rows by them.
class ChannelListView final : public QListView
{
public:
    using QListView::QListView;
    void keyboardSearch(const QString &) override { }
};

QAction *addMenuItem(QMenu *menu, QStringView symbol, const QString &title)
{
    // Titles come from playlists and region names ("Bosnia & Herzegovina"); a lone "&" would
    // mark a shortcut letter instead of showing.
    QString text = title;
    text.replace(u'&', QStringLiteral("&&"));
    QAction *action = menu->addAction(Icons::icon(symbol), text);
    // The symbol's name, for assistive tools and tests.
    action->setProperty("symbol", symbol.toString());
    return action;
}

} // namespace

ChannelList::ChannelList(PlayerModel &model, QWidget *parent)
    : QWidget(parent)
    , m_player(model)
    , m_model(new ChannelListModel(this))
    , m_logos(new ChannelLogoCache(this))
{
    m_pages = new QStackedLayout(this);
    m_channelsPage = new QWidget(this);
    m_pages->addWidget(m_channelsPage);
    m_programmes = new ProgrammeList(model, this);
    m_pages->addWidget(m_programmes);
    connect(m_programmes, &ProgrammeList::closeRequested, this, &ChannelList::closeProgrammes);
    auto *layout = new QVBoxLayout(m_channelsPage);
    layout->setContentsMargins(12, 4, 6, 0);
    layout->setSpacing(6);

    m_header = new QLabel(this);
    QFont caption = m_header->font();
    caption.setPixelSize(10);
    caption.setWeight(QFont::DemiBold);
    caption.setLetterSpacing(QFont::AbsoluteSpacing, 0.6);
    m_header->setFont(caption);
    m_header->setStyleSheet(QStringLiteral("color: rgba(0,0,0,128);"));
    // A list opened from a channel of another leads back to it.
    m_backButton = new QToolButton(this);
    m_backButton->setText(QStringLiteral("\u2039 Back"));
    m_backButton->setAutoRaise(true);
    m_backButton->setToolTip(QStringLiteral("Back to the previous channel list"));
    m_backButton->setStyleSheet(QStringLiteral(
        "QToolButton:focus { border: 1.5px solid palette(highlight); border-radius: 4px; }"));
    KeyboardReach::reachable(m_backButton);
    m_backButton->hide();
    connect(m_backButton, &QToolButton::clicked, &m_player, &PlayerModel::goBack);
    auto *headerRow = new QHBoxLayout;
    headerRow->setSpacing(4);
    headerRow->addWidget(m_backButton);
    headerRow->addWidget(m_header, 1);
    layout->addLayout(headerRow);

    m_search = new QLineEdit(this);
    m_search->setPlaceholderText(QStringLiteral("Search channels"));
    m_search->setClearButtonEnabled(true);
    m_search->setAccessibleName(QStringLiteral("Search channels"));
    layout->addWidget(m_search);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString &text) {
        if (m_resettingFilters)
            return;
        ChannelFilter next = filter();
        next.search = text;
        applyFilter(next);
    });

    auto *menus = new QHBoxLayout;
    menus->setSpacing(2);
    m_countryButton = new FilterMenuButton(QStringLiteral("globe"), this);
    m_categoryButton = new FilterMenuButton(QStringLiteral("square.grid.2x2"), this);
    m_countryButton->setToolTip(QStringLiteral("Filter by country"));
    m_categoryButton->setToolTip(QStringLiteral("Filter by category"));
    menus->addWidget(m_countryButton, 1);
    menus->addWidget(m_categoryButton, 1);
    layout->addLayout(menus);
    // The menus are filled when opened, so a new playlist or filter costs them nothing.
    connect(m_countryButton->menu(), &QMenu::aboutToShow, this, &ChannelList::fillCountryMenu);
    connect(m_categoryButton->menu(), &QMenu::aboutToShow, this, &ChannelList::fillCategoryMenu);

    m_list = new ChannelListView(this);
    m_list->setModel(m_model);
    m_list->setItemDelegate(new ChannelRowDelegate(*m_logos, m_list));
    m_list->setUniformItemSizes(true);
    // A whole-list layout walks every row: over 10 ms for 200,000 channels on a small machine,
    // at each new playlist and each keystroke. The rows on screen come first; the rest follow
    // a part per turn of the event loop.
    m_list->setLayoutMode(QListView::Batched);
    m_list->setBatchSize(2000);
    m_list->setMouseTracking(true);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // A click on a row (or Tab) gives the list the keyboard: the arrows then move through the
    // rows and Return plays one, while Space still pauses.
    m_list->setFocusPolicy(Qt::StrongFocus);
    m_list->setAccessibleName(QStringLiteral("Channels"));
    m_list->installEventFilter(this);
    m_list->viewport()->setAutoFillBackground(false);
    m_list->setStyleSheet(QStringLiteral("QListView { background: transparent; }"));
    m_list->setCursor(Qt::PointingHandCursor);
    layout->addWidget(m_list, 1);
    connect(m_list, &QListView::clicked, this, &ChannelList::play);
    // A right click (or the context-menu key) opens the channel's programmes.
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_list, &QWidget::customContextMenuRequested, this, [this](const QPoint &at) {
        const QModelIndex index = m_list->indexAt(at);
        openProgrammes(index.isValid() ? index.row() : m_list->currentIndex().row());
    });
    connect(m_logos, &ChannelLogoCache::logoArrived, m_list->viewport(),
            qOverload<>(&QWidget::update));

    m_zapTask.setSingleShot(true);
    m_zapTask.setInterval(zapDelayMs);
    connect(&m_zapTask, &QTimer::timeout, this, [this] { play(m_list->currentIndex()); });

    connect(&m_player, &PlayerModel::playlistChanged, this, &ChannelList::showPlaylist);
    connect(&m_player, &PlayerModel::programmeGuideChanged, this, [this] {
        m_model->setProgrammeGuide(m_player.programmeGuide());
        if (showsProgrammes())
            m_programmes->showChannel(m_programmes->channel());
    });
    connect(&m_player, &PlayerModel::programmesChanged, m_model,
            &ChannelListModel::programmesChanged);
    showPlaylist();
}

std::optional<int> ChannelList::playingRow() const
{
    const std::optional<PlaylistEntry> &playing = m_player.playingChannel();
    if (!playing)
        return std::nullopt;
    for (int row = 0; row < m_model->rowCount(); ++row)
        if (m_model->entry(row).id() == playing->id())
            return row;
    return std::nullopt;
}

void ChannelList::stepChannel(int step)
{
    // During a series of steps each goes on from the last; afterwards from what plays.
    const std::optional<int> from
        = m_zapTask.isActive() ? std::optional(m_list->currentIndex().row()) : playingRow();
    const std::optional<int> row = ChannelStep::target(from, step, m_model->rowCount());
    if (!row)
        return;
    const QModelIndex index = m_model->index(*row);
    m_list->setCurrentIndex(index);
    m_list->scrollTo(index);
    m_zapTask.start();
}

const ChannelFilter &ChannelList::filter() const
{
    return m_model->filter();
}

void ChannelList::setSearch(const QString &text)
{
    m_search->setText(text);
}

void ChannelList::setCountryCode(const std::optional<QString> &code)
{
    ChannelFilter next = filter();
    next.countryCode = code;
    applyFilter(next);
}

void ChannelList::setCategory(const std::optional<QString> &category)
{
    ChannelFilter next = filter();
    next.category = category;
    applyFilter(next);
}

void ChannelList::resetFilters()
{
    // Not by blocking the field's signals: its clear button follows its text through them.
    {
        const QScopedValueRollback resetting(m_resettingFilters, true);
        m_search->clear();
    }
    applyFilter(ChannelFilter());
}

void ChannelList::openProgrammes(int row)
{
    if (row < 0 || row >= m_model->rowCount())
        return;
    const PlaylistEntry &entry = m_model->entry(row);
    if (m_player.programmeGuide()->isEmpty() && !entry.catchup())
        return;
    m_list->setCurrentIndex(m_model->index(row));
    m_programmes->showChannel(entry);
    m_pages->setCurrentWidget(m_programmes);
    m_programmes->listView()->setFocus(Qt::OtherFocusReason);
}

void ChannelList::closeProgrammes()
{
    if (!showsProgrammes())
        return;
    m_pages->setCurrentWidget(m_channelsPage);
    m_programmes->clear();
    m_list->setFocus(Qt::OtherFocusReason);
}

bool ChannelList::showsProgrammes() const
{
    return m_pages->currentWidget() == m_programmes;
}

void ChannelList::showPlaylist()
{
    closeProgrammes();
    m_backButton->setVisible(m_player.canGoBack());
    m_model->setIndex(m_player.channelIndex());
    m_list->scrollToTop();
    updateHeader();
}

void ChannelList::applyFilter(const ChannelFilter &filter)
{
    m_model->setFilter(filter);
    updateHeader();
}

QString ChannelList::headerText() const
{
    return m_header->text();
}

QString ChannelList::countryMenuTitle() const
{
    return m_countryButton->text();
}

QString ChannelList::categoryMenuTitle() const
{
    return m_categoryButton->text();
}

void ChannelList::updateHeader()
{
    m_header->setText(ChannelFilters::header(m_model->rowCount(), m_model->playlist().size()));
    const ChannelFilter &current = filter();
    m_countryButton->setText(current.countryCode ? ChannelFilters::countryName(*current.countryCode)
                                                 : QStringLiteral("Countries"));
    m_categoryButton->setText(current.category.value_or(QStringLiteral("Category")));
    m_countryButton->updateGeometry();
    m_categoryButton->updateGeometry();
    m_countryButton->update();
    m_categoryButton->update();
}

void ChannelList::fillCountryMenu()
{
    QMenu *menu = m_countryButton->menu();
    menu->clear();
    const std::optional<QString> selected = filter().countryCode;
    QAction *all
        = addMenuItem(menu, selected ? u"globe" : u"checkmark", QStringLiteral("Countries"));
    connect(all, &QAction::triggered, this, [this] { setCountryCode(std::nullopt); });
    const QStringList &codes = m_model->channelIndex().countryCodes();
    if (codes.isEmpty())
        return;
    menu->addSeparator();
    for (const QString &code : codes) {
        QAction *item = addMenuItem(menu, code == selected ? u"checkmark" : u"tv",
                                    ChannelFilters::countryName(code));
        connect(item, &QAction::triggered, this, [this, code] { setCountryCode(code); });
    }
}

void ChannelList::fillCategoryMenu()
{
    QMenu *menu = m_categoryButton->menu();
    menu->clear();
    const std::optional<QString> selected = filter().category;
    QAction *all = addMenuItem(menu, selected ? u"square.grid.2x2" : u"checkmark",
                               QStringLiteral("Category"));
    connect(all, &QAction::triggered, this, [this] { setCategory(std::nullopt); });
    const QStringList &categories = m_model->channelIndex().categories();
    if (categories.isEmpty())
        return;
    menu->addSeparator();
    for (const QString &category : categories) {
        QAction *item = addMenuItem(menu, category == selected ? u"checkmark" : u"tv", category);
        connect(item, &QAction::triggered, this, [this, category] { setCategory(category); });
    }
}

void ChannelList::play(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    m_list->setCurrentIndex(index);
    m_list->setFocus(Qt::MouseFocusReason);
    m_player.playChannel(m_model->entry(index.row()));
}

bool ChannelList::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        const auto *press = static_cast<QKeyEvent *>(event);
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            play(m_list->currentIndex());
            return true;
        }
        if (key == Qt::Key_Menu
            || (key == Qt::Key_F10 && press->modifiers() == Qt::ShiftModifier)) {
            openProgrammes(m_list->currentIndex().row());
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
