#include "playerwindow.h"

#include "applicationmenus.h"
#include "contentview.h"
#include "model/playermodel.h"
#include "surface/fullscreentoggle.h"
#include "surface/playersurface.h"

#include <QEvent>
#include <QMenuBar>
#include <QWindowStateChangeEvent>

PlayerWindow::PlayerWindow(PlayerModel &model, QWidget *parent)
    : QMainWindow(parent)
    , m_content(new ContentView(model, this))
{
    setCentralWidget(m_content);
    ApplicationMenus::install(*menuBar(), model, *m_content);
    connect(&model, &PlayerModel::fullScreenToggleRequested, this, [this] {
        if (isActiveWindow())
            toggleFullScreen(this);
    });
    connect(&model, &PlayerModel::fullScreenLeaveRequested, this, [this] {
        if (isFullScreen())
            toggleFullScreen(this);
    });
    m_content->applyWindowTitleNow();
}

PlayerSurface *PlayerWindow::surface() const
{
    return m_content->surface();
}

PlayerHostingView *PlayerWindow::hostingView() const
{
    return m_content->surface()->hostingView();
}

void PlayerWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange)
        return;
    // Full screen belongs to the picture alone.
    menuBar()->setVisible(!isFullScreen());
    m_content->setFullScreen(isFullScreen());
    const Qt::WindowStates filling = Qt::WindowMaximized | Qt::WindowFullScreen;
    const auto *change = static_cast<QWindowStateChangeEvent *>(event);
    if ((change->oldState() & filling) && !(windowState() & filling))
        m_content->windowRestored();
}
