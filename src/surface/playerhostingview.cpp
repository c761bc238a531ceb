#include "playerhostingview.h"

#include "model/mpvplayer.h"
#include "mpvrendercontext.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>

PlayerHostingView::PlayerHostingView(QWidget *parent)
    : QOpenGLWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(1, 1);
}

PlayerHostingView::~PlayerHostingView()
{
    releaseRenderContext();
}

void PlayerHostingView::setPlayer(MpvPlayer *player)
{
    if (player == m_player)
        return;
    releaseRenderContext();
    if (m_player)
        m_player->disconnect(this);
    m_player = player;
    if (m_player) {
        // The render context must go before the handle it was made on.
        connect(m_player, &MpvPlayer::aboutToDestroyHandle, this,
                &PlayerHostingView::releaseRenderContext, Qt::DirectConnection);
        if (context())
            createRenderContext();
    }
}

bool PlayerHostingView::isReady() const
{
    return m_renderContext && m_renderContext->isValid();
}

void PlayerHostingView::initializeGL()
{
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this,
            &PlayerHostingView::releaseRenderContext, Qt::DirectConnection);
    connect(this, &QOpenGLWidget::frameSwapped, this, [this] {
        if (m_renderContext)
            m_renderContext->reportSwap();
    });
    if (m_player)
        createRenderContext();
}

void PlayerHostingView::createRenderContext()
{
    makeCurrent();
    QPointer<PlayerHostingView> self(this);
    // Called on mpv's render thread: only queue a repaint.
    m_renderContext = std::make_unique<MpvRenderContext>(m_player->handle(), [self] {
        QMetaObject::invokeMethod(
            self,
            [self] {
                if (self)
                    self->update();
            },
            Qt::QueuedConnection);
    });
    doneCurrent();
    if (isReady())
        Q_EMIT ready();
}

void PlayerHostingView::releaseRenderContext()
{
    if (!m_renderContext)
        return;
    makeCurrent();
    m_renderContext.reset();
    doneCurrent();
}

void PlayerHostingView::paintGL()
{
    if (!isReady()) {
        QOpenGLFunctions *gl = context()->functions();
        gl->glClearColor(0, 0, 0, 1);
        gl->glClear(GL_COLOR_BUFFER_BIT);
        return;
    }
    const bool newFrame = m_renderContext->takeFrameUpdate();
    const qreal ratio = devicePixelRatioF();
    m_renderContext->render(defaultFramebufferObject(), qRound(width() * ratio),
                            qRound(height() * ratio));
    if (newFrame)
        Q_EMIT frameDrawn();
}
