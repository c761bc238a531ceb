// ContentView's keyboard: the order Tab takes through the sidebar and the bar, and when the
// address field has the keys or lets them go to the player.
#include "contentview.h"

#include "channellist.h"
#include "filtermenubutton.h"
#include "keyboardreach.h"
#include "nametoggle.h"
#include "networkpanel.h"
#include "playercontrolbar.h"
#include "surface/playersurface.h"

#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QToolButton>

void ContentView::orderTabs()
{
    // In visual order: the sidebar from top to bottom, then the bar from left to right.
    QList<QWidget *> chain {m_networkPanel->nameToggle(),   m_networkPanel->addressField(),
                            m_networkPanel->clearButton(),  m_networkPanel->movieNameField(),
                            m_networkPanel->importButton(), m_networkPanel->playButton(),
                            m_channelList->backButton(),    m_channelList->searchField(),
                            m_channelList->countryButton(), m_channelList->categoryButton(),
                            m_channelList->listView()};
    // The picture's invitation to open media, while nothing plays.
    if (auto *invitation = m_surface->findChild<QPushButton *>(QStringLiteral("emptyState"))) {
        KeyboardReach::reachable(invitation);
        chain.append(invitation);
    }
    chain += m_controlBar->focusableControls();
    for (qsizetype i = 1; i < chain.size(); ++i)
        QWidget::setTabOrder(chain.at(i - 1), chain.at(i));
}

void ContentView::releaseAddressField()
{
    m_addressFocusTask.stop();
    if (m_networkPanel->isAddressFieldFocused())
        setFocus(Qt::OtherFocusReason);
}

void ContentView::focusAddressField()
{
    if (m_showSidebar)
        m_networkPanel->focusAddressField();
    else
        setShowSidebar(true);
}
