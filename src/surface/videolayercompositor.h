#pragma once
// Draws the video as the display modes lay it out: mpv renders into an offscreen framebuffer the
// size of the picture (aspect-fill), which is then drawn at the picture's place, turned when the
// mode turns it, clipped to the portrait window, on black. Keeps the last picture so that it can
// be sampled. Every call needs the view's GL context current.
#include "displaygeometry.h"

#include <QImage>
#include <QOpenGLTextureBlitter>
#include <memory>

class MpvRenderContext;
class QOpenGLFramebufferObject;

class VideoLayerCompositor final
{
public:
    VideoLayerCompositor();
    ~VideoLayerCompositor();
    VideoLayerCompositor(const VideoLayerCompositor &) = delete;
    VideoLayerCompositor &operator=(const VideoLayerCompositor &) = delete;

    // Fills the target framebuffer (viewPixels in size) with black, then draws the video of
    // renderContext laid out by frame (in points; ratio is device pixels per point).
    void draw(MpvRenderContext &renderContext, const DisplayGeometry::PlayerLayerFrame &frame,
              unsigned targetFbo, QSize viewPixels, qreal ratio);
    // Only black, for a view with nothing to show.
    static void clear(unsigned targetFbo, QSize viewPixels);
    // The picture last drawn, scaled on the GPU to width pixels wide, as 32-bit RGBx
    // (QImage::Format_RGBX8888); null when nothing has been drawn.
    QImage sample(int width);
    // Frees the GL resources; call before the context goes.
    void release();

private:
    bool ensureLayer(QSize pixels);

    std::unique_ptr<QOpenGLFramebufferObject> m_layer;
    std::unique_ptr<QOpenGLFramebufferObject> m_sample;
    QOpenGLTextureBlitter m_blitter;
    bool m_hasPicture = false;
    int m_maxTextureSize = 0; // asked of the context once, not on every frame
};
