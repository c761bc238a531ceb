#include "programmelist.h"

#include "keyboardreach.h"
#include "model/playermodel.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int rowRole = Qt::UserRole + 1; // the row's index in rows()

} // namespace

ProgrammeList::ProgrammeList(PlayerModel &model, QWidget *parent)
    : QWidget(parent)
    , m_player(model)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 4, 6, 0);
    layout->setSpacing(6);

    m_back = new QToolButton(this);
    m_back->setText(QStringLiteral("\u2039 Channels"));
    m_back->setAutoRaise(true);
    m_back->setToolTip(QStringLiteral("Back to the channel list"));
    m_back->setStyleSheet(QStringLiteral(
        "QToolButton:focus { border: 1.5px solid palette(highlight); border-radius: 4px; }"));
    KeyboardReach::reachable(m_back);
    connect(m_back, &QToolButton::clicked, this, &ProgrammeList::closeRequested);
    m_title = new QLabel(QStringLiteral("Programmes"), this);
    QFont caption = m_title->font();
    caption.setPixelSize(10);
    caption.setWeight(QFont::DemiBold);
    caption.setLetterSpacing(QFont::AbsoluteSpacing, 0.6);
    m_title->setFont(caption);
    m_title->setStyleSheet(QStringLiteral("color: rgba(0,0,0,128);"));
    auto *header = new QHBoxLayout;
    header->setSpacing(4);
    header->addWidget(m_back);
    header->addWidget(m_title, 1);
    layout->addLayout(header);

    m_empty = new QLabel(QStringLiteral("No programme guide for this channel."), this);
    m_empty->setWordWrap(true);
    m_empty->hide();
    layout->addWidget(m_empty);

    m_list = new QListWidget(this);
    m_list->setAccessibleName(QStringLiteral("Programmes"));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setFocusPolicy(Qt::StrongFocus);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setWordWrap(true);
    m_list->setStyleSheet(QStringLiteral("QListWidget { background: transparent; }"));
    m_list->installEventFilter(this);
    layout->addWidget(m_list, 1);
    connect(m_list, &QListWidget::itemClicked, this, &ProgrammeList::activate);
}

void ProgrammeList::clear()
{
    m_programmes.clear();
    m_rows.clear();
    m_list->clear();
}

void ProgrammeList::showChannel(const PlaylistEntry &entry)
{
    m_entry = entry;
    m_title->setText(QStringLiteral("PROGRAMMES \u00b7 ") + entry.name());
    m_title->setAccessibleName(QStringLiteral("Programmes"));
    const qsizetype position = m_player.playlistPosition(entry);
    m_programmes = m_player.programmeGuide()->programmes(position);
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    m_rows = ProgrammeRows::rows(m_programmes, entry.catchup(), now);
    m_list->clear();
    QListWidgetItem *onAir = nullptr;
    QFont bold = m_list->font();
    bold.setWeight(QFont::DemiBold);
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        const ProgrammeRows::Row &row = m_rows[i];
        auto *item = new QListWidgetItem(m_list);
        item->setData(rowRole, int(i));
        if (row.isDay) {
            item->setText(row.text);
            item->setFont(bold);
            item->setFlags(Qt::ItemIsEnabled);
            item->setForeground(QColor(0, 0, 0, 150));
            continue;
        }
        // ▶ marks the programme on air, ⟲ what the archive holds.
        QString text = row.text;
        if (row.when == ProgrammeRows::When::onAir)
            text = QStringLiteral("\u25b6 ") + text;
        if (row.archived)
            text += QStringLiteral("  \u27f2");
        item->setText(text);
        item->setData(Qt::AccessibleTextRole, text);
        if (row.when == ProgrammeRows::When::onAir) {
            item->setFont(bold);
            onAir = item;
        } else if (row.when == ProgrammeRows::When::future
                   || (row.when == ProgrammeRows::When::past && !row.archived)) {
            item->setForeground(QColor(0, 0, 0, 110));
        }
    }
    const bool empty = m_rows.isEmpty();
    m_empty->setVisible(empty);
    m_list->setVisible(!empty);
    if (onAir) {
        m_list->setCurrentItem(onAir);
        m_list->scrollToItem(onAir, QAbstractItemView::PositionAtCenter);
    }
}

QMenu *ProgrammeList::onAirMenu() const
{
    return m_onAirMenu && m_onAirMenu->isVisible() ? m_onAirMenu.data() : nullptr;
}

void ProgrammeList::activate(QListWidgetItem *item)
{
    if (!item)
        return;
    const int at = item->data(rowRole).toInt();
    if (at < 0 || at >= m_rows.size() || m_rows[at].isDay)
        return;
    const ProgrammeRows::Row row = m_rows[at];
    const ProgrammeGuide::Programme programme = m_programmes.value(row.programme);
    switch (row.when) {
    case ProgrammeRows::When::future:
        return;
    case ProgrammeRows::When::past:
        if (row.archived)
            m_player.playArchive(m_entry, programme);
        return;
    case ProgrammeRows::When::onAir: {
        auto *menu = new QMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        QAction *fromStart = menu->addAction(QStringLiteral("Play from Start"));
        fromStart->setEnabled(row.archived);
        QAction *live = menu->addAction(QStringLiteral("Watch Live"));
        const PlaylistEntry entry = m_entry;
        connect(fromStart, &QAction::triggered, this,
                [this, entry, programme] { m_player.playArchive(entry, programme); });
        connect(live, &QAction::triggered, this, [this, entry] { m_player.playChannel(entry); });
        m_onAirMenu = menu;
        const QRect rect = m_list->visualItemRect(item);
        menu->popup(m_list->viewport()->mapToGlobal(rect.bottomLeft()));
        return;
    }
    }
}

bool ProgrammeList::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            activate(m_list->currentItem());
            return true;
        }
        if (key == Qt::Key_Escape || key == Qt::Key_Backspace) {
            Q_EMIT closeRequested();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
