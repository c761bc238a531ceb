#include "playerhostingview.h"

#include "facedetector.h"
#include "facedetectors.h"
#include "facetracker.h"
#include "framebufferreadback.h"
#include "fullscreentoggle.h"
#include "model/mpvplayer.h"
#include "model/playernotifications.h"
#include "mpvframegrabber.h"
#include "mpvrendercontext.h"
#include "smartreframe.h"
#include "subtitlepainter.h"
#include "videolayercompositor.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QPainter>
#include <QStyleHints>
#include <QTimer>
#include <QWindow>

PlayerHostingView::PlayerHostingView(QWidget *parent)
    : QOpenGLWidget(parent)
    , m_compositor(std::make_unique<VideoLayerCompositor>())
    , m_faceDetectorFactory(&FaceDetectors::makeDefault)
    , m_windowDragHandler([](QWindow *window) {
        if (window)
            window->startSystemMove();
    })
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(1, 1);
}

PlayerHostingView::~PlayerHostingView()
{
    m_smartTimer.reset();
    releaseGraphics();
    // The base class destroys the context after this class's members are gone.
    if (context())
        disconnect(context(), nullptr, this, nullptr);
}

void PlayerHostingView::setPlayer(MpvPlayer *player)
{
    if (player == m_player)
        return;
    releaseGraphics();
    if (m_player)
        m_player->disconnect(this);
    m_player = player;
    forgetSamples();
    if (m_player) {
        // The render context must go before the handle it was made on.
        connect(m_player, &MpvPlayer::aboutToDestroyHandle, this,
                &PlayerHostingView::releaseGraphics, Qt::DirectConnection);
        // The picture's shape decides the layout in the reframe modes.
        // A face found in the picture before either changed is not followed.
        connect(m_player, &MediaPlayer::presentationSizeChanged, this, [this] {
            forgetSamples();
            updatePlayerFrame();
        });
        connect(m_player, &MediaPlayer::hasItemChanged, this, [this] {
            forgetSamples();
            updatePlayerFrame();
        });
        // A new subtitle is drawn with the next frame, or at once on a paused one.
        const auto redrawSubtitles = [this] {
            if (drawsSubtitles())
                update();
        };
        connect(m_player, &MpvPlayer::subtitleTextChanged, this, redrawSubtitles);
        connect(m_player, &MpvPlayer::subtitlesVisibleChanged, this, redrawSubtitles);
        m_player->setSubtitlesDrawnByView(drawsSubtitles());
        if (context())
            createRenderContext();
    }
    updatePlayerFrame();
}

MpvPlayer *PlayerHostingView::player() const
{
    return m_player;
}

bool PlayerHostingView::drawsSubtitles() const
{
    return m_player && m_displayMode != PortraitDisplayMode::normal;
}

bool PlayerHostingView::isReady() const
{
    return m_renderContext && m_renderContext->isValid();
}

void PlayerHostingView::setDisplayMode(PortraitDisplayMode mode)
{
    if (mode == m_displayMode) {
        updatePlayerFrame();
        return;
    }
    m_displayMode = mode;
    forgetSamples();
    if (mode == PortraitDisplayMode::fill || mode == PortraitDisplayMode::rotate)
        setHorizontalPan(0);
    if (m_player)
        m_player->setSubtitlesDrawnByView(drawsSubtitles());
    updateSmartTimer();
    updatePlayerFrame();
}

void PlayerHostingView::setFillScreen(bool fillScreen)
{
    if (fillScreen == m_fillScreen)
        return;
    m_fillScreen = fillScreen;
    updatePlayerFrame();
}

void PlayerHostingView::setHorizontalPan(double pan)
{
    if (pan == m_horizontalPan)
        return;
    m_horizontalPan = pan;
    Q_EMIT horizontalPanChanged(pan);
}

QSizeF PlayerHostingView::presentationSize() const
{
    if (!m_player || !m_player->hasItem())
        return {};
    return QSizeF(m_player->presentationSize());
}

void PlayerHostingView::updatePlayerFrame()
{
    m_layerFrame = DisplayGeometry::layout(m_displayMode, QSizeF(size()), presentationSize(),
                                           m_horizontalPan);
    update();
}

QRectF PlayerHostingView::recordingRectInView() const
{
    if (!PortraitDisplayModes::isPortrait(m_displayMode))
        return QRectF(rect());
    return m_layerFrame.crop;
}

void PlayerHostingView::resizeEvent(QResizeEvent *event)
{
    QOpenGLWidget::resizeEvent(event);
    forgetSamples();
    updatePlayerFrame();
}

void PlayerHostingView::updateSmartTimer()
{
    m_smartTimer.reset();
    if (m_displayMode != PortraitDisplayMode::smart)
        return;
    m_smartTimer = std::make_unique<QTimer>();
    m_smartTimer->setInterval(SmartReframe::sampleIntervalMs);
    // The timer belongs to this view and dies with it, so the step never outlives the view.
    connect(m_smartTimer.get(), &QTimer::timeout, this, &PlayerHostingView::trackLargestFace);
    m_smartTimer->start();
}

QImage PlayerHostingView::samplePicture(int width)
{
    if (!isReady() || !context())
        return {};
    makeCurrent();
    QImage image = m_compositor->sample(width);
    doneCurrent();
    return image;
}

void PlayerHostingView::trackLargestFace()
{
    if (m_displayMode != PortraitDisplayMode::smart || !m_player || !isReady())
        return;
    // A paused picture is not analysed again: the pan stays where it is.
    if (m_drawnFrames == m_sampledFrames)
        return;
    // One detection at a time: a sample due while one runs is skipped.
    if (isFindingFaces())
        return;
    if (!m_frameGrabber)
        m_frameGrabber = std::make_shared<MpvFrameGrabber>(m_player->handle());
    if (!m_faceTracker) {
        m_faceTracker = std::make_unique<FaceTracker>(m_faceDetectorFactory);
        connect(m_faceTracker.get(), &FaceTracker::facesFound, this,
                &PlayerHostingView::followFaces);
    }
    m_sampledFrames = m_drawnFrames;
    m_faceTracker->submit([grabber = m_frameGrabber] { return grabber->grab(); }, m_sampleTicket);
}

void PlayerHostingView::stopFaceTracking()
{
    if (m_frameGrabber)
        m_frameGrabber->stop();
    m_faceTracker.reset();
    m_frameGrabber.reset();
}

bool PlayerHostingView::isFindingFaces() const
{
    return m_faceTracker && m_faceTracker->isBusy();
}

void PlayerHostingView::followFaces(const QList<QRectF> &faces, quint64 ticket)
{
    if (ticket != m_sampleTicket || m_displayMode != PortraitDisplayMode::smart)
        return;
    setHorizontalPan(SmartReframe::nextPan(m_horizontalPan, faces));
    updatePlayerFrame();
}

void PlayerHostingView::setWindowDragHandler(WindowDragHandler handler)
{
    m_windowDragHandler = std::move(handler);
}

void PlayerHostingView::setFaceDetectorFactory(FaceDetectorFactory factory)
{
    m_faceDetectorFactory = std::move(factory);
    stopFaceTracking();
    forgetSamples();
}

void PlayerHostingView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QOpenGLWidget::mousePressEvent(event);
        return;
    }
    QWindow *windowHandle = window()->windowHandle();
    Q_EMIT PlayerNotifications::shared().playerSurfaceClicked(windowHandle);
    if (m_displayMode == PortraitDisplayMode::manual) {
        m_dragging = true;
        m_dragStartX = event->scenePosition().x();
        m_dragStartPan = m_horizontalPan;
        return;
    }
    // The window is moved only once the pointer has moved with the button down: handed to the
    // window manager at the press, the release and the next click would go to it instead.
    m_windowDragArmed = true;
    m_pressGlobal = event->globalPosition();
}

void PlayerHostingView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_windowDragArmed && (event->buttons() & Qt::LeftButton)) {
        const QPointF moved = event->globalPosition() - m_pressGlobal;
        if (moved.manhattanLength() >= QGuiApplication::styleHints()->startDragDistance()) {
            m_windowDragArmed = false;
            if (m_windowDragHandler)
                m_windowDragHandler(window()->windowHandle());
        }
        return;
    }
    if (!m_dragging || !(event->buttons() & Qt::LeftButton)) {
        QOpenGLWidget::mouseMoveEvent(event);
        return;
    }
    setHorizontalPan(DisplayGeometry::draggedPan(
        m_dragStartPan, event->scenePosition().x() - m_dragStartX, width()));
    updatePlayerFrame();
}

void PlayerHostingView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_dragging = false;
        m_windowDragArmed = false;
    }
    QOpenGLWidget::mouseReleaseEvent(event);
}

void PlayerHostingView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QOpenGLWidget::mouseDoubleClickEvent(event);
        return;
    }
    // The second click of a double click toggles full screen and posts nothing.
    m_dragging = false;
    m_windowDragArmed = false;
    toggleFullScreen(window());
}

void PlayerHostingView::initializeGL()
{
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this,
            &PlayerHostingView::releaseGraphics, Qt::DirectConnection);
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

void PlayerHostingView::releaseGraphics()
{
    // The frame grabber is a client of the player's handle and must go before it.
    stopFaceTracking();
    if (!m_renderContext && !context())
        return;
    makeCurrent();
    m_compositor->release();
    if (m_readback)
        m_readback->release();
    m_renderContext.reset();
    doneCurrent();
}

void PlayerHostingView::setPictureReceiver(PictureReceiver receiver)
{
    m_pictureReceiver = std::move(receiver);
    if (m_pictureReceiver) {
        if (!m_readback)
            m_readback = std::make_unique<FramebufferReadback>();
        // A paused picture is not drawn again by itself; one paint gives the recording its
        // first picture.
        update();
    }
}

void PlayerHostingView::deliverPicture()
{
    if (!m_readback || !m_readback->isPending() || !context())
        return;
    makeCurrent();
    CapturedPicture picture {m_readback->take(), true, m_readbackDrawnAt};
    doneCurrent();
    if (m_pictureReceiver && !picture.image.isNull())
        m_pictureReceiver(picture);
}

void PlayerHostingView::paintGL()
{
    const qreal ratio = devicePixelRatioF();
    const QSize viewPixels(qRound(width() * ratio), qRound(height() * ratio));
    if (!isReady()) {
        VideoLayerCompositor::clear(defaultFramebufferObject(), viewPixels);
        return;
    }
    const bool newFrame = m_renderContext->takeFrameUpdate();
    // Asked before drawing: afterwards the frame is no longer the next one.
    const auto target = newFrame ? m_renderContext->nextFrameTarget() : std::nullopt;
    if (m_player && m_player->hasItem())
        m_compositor->draw(*m_renderContext, m_layerFrame, defaultFramebufferObject(), viewPixels,
                           ratio);
    else
        // mpv keeps showing the last picture of an item that ended in failure or was stopped:
        // with nothing loaded, nothing is shown (and recorded).
        VideoLayerCompositor::clear(defaultFramebufferObject(), viewPixels);
    if (drawsSubtitles() && m_player->hasItem() && m_player->subtitlesVisible()
        && !m_player->subtitleText().isEmpty()) {
        // Into the same frame the recording reads back.
        QPainter painter(this);
        SubtitlePainter::paint(painter, m_player->subtitleText(), m_layerFrame.crop);
    }
    if (m_pictureReceiver && m_readback) {
        // Collected on the next turn of the event loop, once the GPU has finished the copy.
        const bool alreadyQueued = m_readback->isPending();
        m_readback->start(defaultFramebufferObject(), viewPixels);
        // Stamped with when mpv meant it to be seen, which is when its sound is heard, and
        // otherwise when it is drawn; never when it is collected.
        m_readbackDrawnAt = target.value_or(std::chrono::steady_clock::now());
        if (!alreadyQueued)
            QMetaObject::invokeMethod(this, &PlayerHostingView::deliverPicture,
                                      Qt::QueuedConnection);
    }
    if (newFrame) {
        ++m_drawnFrames;
        Q_EMIT frameDrawn();
    }
}
