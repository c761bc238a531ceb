#include "playerwindow.h"

#include "model/playermodel.h"
#include "surface/playersurface.h"
#include "webplayer/youtubeplayerview.h"

#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QResizeEvent>

namespace {
constexpr int toastInset = 14;
} // namespace

PlayerWindow::PlayerWindow(PlayerModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
{
    setMinimumSize(520, 360);
    resize(initialSize);

    m_surface = new PlayerSurface(model, this);
    m_surface->setWebPlayerViewFactory(
        [](QWidget *parent) -> WebPlayerView * { return new YouTubePlayerView(parent); });

    m_toast = new QLabel(this);
    m_toast->setAlignment(Qt::AlignCenter);
    m_toast->setWordWrap(true);
    m_toast->setStyleSheet(QStringLiteral(
        "color: white; background: rgba(0,0,0,209); border-radius: 8px; padding: 8px 14px;"));
    m_toast->setAttribute(Qt::WA_TransparentForMouseEvents);

    m_error = new QLabel(this);
    m_error->setAlignment(Qt::AlignCenter);
    m_error->setWordWrap(true);
    m_error->setStyleSheet(QStringLiteral("color: #ff6b6b; background: rgba(0,0,0,170);"));

    connect(&m_model, &PlayerModel::toastMessageChanged, this, &PlayerWindow::updateToast);
    connect(&m_model, &PlayerModel::errorMessageChanged, this, &PlayerWindow::updateError);
    connect(&m_model, &PlayerModel::titleChanged, this,
            [this] { setWindowTitle(m_model.title()); });

    setWindowTitle(m_model.title());
    updateToast();
    updateError();
}

void PlayerWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_model.installKeyboardShortcuts();
}

void PlayerWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutOverlays();
}

void PlayerWindow::layoutOverlays()
{
    const QRect area = rect();
    m_surface->setGeometry(area);
    const int toastWidth = std::min(area.width() - 2 * toastInset, 520);
    m_toast->setFixedWidth(std::max(toastWidth, 0));
    m_toast->adjustSize();
    m_toast->move((area.width() - m_toast->width()) / 2, toastInset);
    m_error->setFixedWidth(area.width());
    m_error->adjustSize();
    m_error->move(0, area.height() - m_error->height());
}

PlayerHostingView *PlayerWindow::hostingView() const
{
    return m_surface->hostingView();
}

void PlayerWindow::contextMenuEvent(QContextMenuEvent *event)
{
    // Until the control bar offers it, the display-mode menu opens on the picture.
    QMenu menu(this);
    for (PortraitDisplayMode mode : PortraitDisplayModes::allCases) {
        QAction *action = menu.addAction(PortraitDisplayModes::title(mode));
        action->setCheckable(true);
        action->setChecked(mode == m_surface->portraitMode());
        connect(action, &QAction::triggered, this,
                [this, mode] { m_surface->setPortraitMode(mode); });
    }
    menu.exec(event->globalPos());
}

void PlayerWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange)
        m_surface->setFullScreen(isFullScreen());
}

void PlayerWindow::updateToast()
{
    m_toast->setText(m_model.toastMessage());
    m_toast->setVisible(!m_model.toastMessage().isNull());
    layoutOverlays();
    m_toast->raise();
}

void PlayerWindow::updateError()
{
    m_error->setText(m_model.errorMessage());
    m_error->setVisible(!m_model.errorMessage().isNull());
    layoutOverlays();
}
