#include "playerwindow.h"

#include "applicationmenus.h"
#include "contentview.h"
#include "surface/playersurface.h"

#include <QEvent>
#include <QMenuBar>

PlayerWindow::PlayerWindow(PlayerModel &model, QWidget *parent)
    : QMainWindow(parent)
    , m_content(new ContentView(model, this))
{
    setCentralWidget(m_content);
    ApplicationMenus::install(*menuBar(), model);
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
}
