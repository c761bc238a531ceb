#pragma once
// "Programmes": a channel's programmes by day over the channel list, the one on air marked and
// scrolled into view, past ones the archive holds marked too. A click plays a past programme
// from the archive; the one on air offers "Play from Start" and "Watch Live".
#include "programmerows.h"
#include "sources/playlistentry.h"

#include <QMenu>
#include <QPointer>
#include <QWidget>

class PlayerModel;
class QLabel;
class QListWidget;
class QListWidgetItem;
class QToolButton;

class ProgrammeList final : public QWidget
{
    Q_OBJECT

public:
    explicit ProgrammeList(PlayerModel &model, QWidget *parent = nullptr);

    // Lists the entry's programmes as of now.
    void showChannel(const PlaylistEntry &entry);
    const PlaylistEntry &channel() const { return m_entry; }
    // Clears the list: the guide it came from is gone.
    void clear();

    QListWidget *listView() const { return m_list; }
    QToolButton *backButton() const { return m_back; }
    QLabel *emptyLabel() const { return m_empty; }
    const QList<ProgrammeRows::Row> &rows() const { return m_rows; }
    // The menu of the programme on air, while it is open.
    QMenu *onAirMenu() const;

Q_SIGNALS:
    // "‹ Channels" (or Escape): back to the channel list.
    void closeRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void activate(QListWidgetItem *item);

    PlayerModel &m_player;
    PlaylistEntry m_entry;
    QList<ProgrammeGuide::Programme> m_programmes;
    QList<ProgrammeRows::Row> m_rows;
    QToolButton *m_back = nullptr;
    QLabel *m_title = nullptr;
    QLabel *m_empty = nullptr;
    QListWidget *m_list = nullptr;
    QPointer<QMenu> m_onAirMenu;
};
