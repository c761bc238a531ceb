#pragma once
// The view that shows the media player's video in the current display mode: the whole picture,
// or a 9:16 portrait window cut out of it that can be panned by dragging (manual reframe) or
// follows the largest face (smart reframe). It is also the surface a recording captures.
#include "displaygeometry.h"
#include "playerrecordingsurface.h"
#include "portraitdisplaymode.h"

#include <QOpenGLWidget>
#include <QPointer>
#include <functional>
#include <memory>

class FaceDetector;
class FaceTracker;
class FramebufferReadback;
class MpvFrameGrabber;
class MpvPlayer;
class MpvRenderContext;
class QTimer;
class VideoLayerCompositor;

class PlayerHostingView final : public QOpenGLWidget, public PlayerRecordingSurface
{
    Q_OBJECT

public:
    // Moves the window along with the pointer; the default asks the window system to.
    using WindowDragHandler = std::function<void(QWindow *)>;
    // Makes the face detector when smart reframe first needs one; may return null.
    using FaceDetectorFactory = std::function<std::unique_ptr<FaceDetector>()>;

    explicit PlayerHostingView(QWidget *parent = nullptr);
    ~PlayerHostingView() override;

    // The player whose video this view draws; the view follows it until either goes away.
    void setPlayer(MpvPlayer *player);
    MpvPlayer *player() const;
    // True once the view can draw video (its GL context and render context exist).
    bool isReady() const;

    void setDisplayMode(PortraitDisplayMode mode);
    PortraitDisplayMode displayMode() const { return m_displayMode; }
    // In the modes that crop or turn the picture, subtitles are drawn here rather than by mpv.
    bool drawsSubtitles() const;
    // Set while the window is in full screen; only forces a fresh layout.
    void setFillScreen(bool fillScreen);
    bool fillScreen() const { return m_fillScreen; }
    // -1...+1: where the portrait window sits across a wider picture; +1 shows its left edge.
    double horizontalPan() const { return m_horizontalPan; }

    // Lays the picture out again for the current size, mode, pan and video size.
    void updatePlayerFrame();
    const DisplayGeometry::PlayerLayerFrame &playerLayerFrame() const { return m_layerFrame; }

    // One smart-reframe step: if a new frame was shown since the last step and no detection is
    // under way, the face tracker's thread takes the frame from mpv and finds its faces; the pan
    // moves a step towards the largest when they come back.
    void trackLargestFace();
    // Whether a sampled picture is being searched for faces.
    bool isFindingFaces() const;
    // Whether the smart-reframe sampling timer runs (only in smart mode).
    bool hasSmartTimer() const { return m_smartTimer != nullptr; }
    // Frames of video drawn so far; a frame counts once however often it is redrawn.
    quint64 drawnFrameCount() const { return m_drawnFrames; }
    // The picture last drawn, scaled to width pixels wide, 32-bit RGBx; null before the first
    // frame.
    QImage samplePicture(int width);

    QWidget *recordingView() override { return this; }
    QRectF recordingRectInView() const override;
    void setPictureReceiver(PictureReceiver receiver) override;

    void setWindowDragHandler(WindowDragHandler handler);
    void setFaceDetectorFactory(FaceDetectorFactory factory);

Q_SIGNALS:
    void ready();
    // A paint drew a frame that mpv had newly decoded.
    void frameDrawn();
    // The pan changed, by dragging or by smart reframe.
    void horizontalPanChanged(double pan);

protected:
    void initializeGL() override;
    void paintGL() override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void createRenderContext();
    void releaseGraphics();
    void updateSmartTimer();
    void setHorizontalPan(double pan);
    QSizeF presentationSize() const;
    void deliverPicture();
    // Results of samples taken before this changed (item, mode, view size) are dropped.
    void forgetSamples() { ++m_sampleTicket; }
    void followFaces(const QList<QRectF> &faces, quint64 ticket);
    // Ends face detection and lets go of mpv; before the player's handle goes.
    void stopFaceTracking();

    QPointer<MpvPlayer> m_player;
    std::unique_ptr<MpvRenderContext> m_renderContext;
    std::unique_ptr<VideoLayerCompositor> m_compositor;
    PortraitDisplayMode m_displayMode = PortraitDisplayMode::normal;
    bool m_fillScreen = false;
    double m_horizontalPan = 0;
    DisplayGeometry::PlayerLayerFrame m_layerFrame;
    std::unique_ptr<QTimer> m_smartTimer;
    std::unique_ptr<FaceTracker> m_faceTracker;
    // Shared with the detection thread's queued work, which ends before the tracker does.
    std::shared_ptr<MpvFrameGrabber> m_frameGrabber;
    FaceDetectorFactory m_faceDetectorFactory;
    quint64 m_sampleTicket = 0;
    quint64 m_drawnFrames = 0;
    quint64 m_sampledFrames = 0;
    WindowDragHandler m_windowDragHandler;
    PictureReceiver m_pictureReceiver;
    std::unique_ptr<FramebufferReadback> m_readback;
    std::chrono::steady_clock::time_point m_readbackDrawnAt;
    // A press that moves the window once the pointer has gone far enough with the button down.
    bool m_windowDragArmed = false;
    QPointF m_pressGlobal;
    // The manual-reframe drag under way: where it started and the pan then.
    bool m_dragging = false;
    double m_dragStartX = 0;
    double m_dragStartPan = 0;
};
