#include "videolayercompositor.h"

#include "mpvrendercontext.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFramebufferObject>
#include <QtMath>
#include <cmath>

VideoLayerCompositor::VideoLayerCompositor() = default;

VideoLayerCompositor::~VideoLayerCompositor() = default;

void VideoLayerCompositor::release()
{
    m_layer.reset();
    m_sample.reset();
    if (m_blitter.isCreated())
        m_blitter.destroy();
    m_hasPicture = false;
    m_maxTextureSize = 0;
}

void VideoLayerCompositor::clear(unsigned targetFbo, QSize viewPixels)
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    gl->glBindFramebuffer(GL_FRAMEBUFFER, targetFbo);
    gl->glViewport(0, 0, viewPixels.width(), viewPixels.height());
    gl->glDisable(GL_SCISSOR_TEST);
    gl->glClearColor(0, 0, 0, 1);
    gl->glClear(GL_COLOR_BUFFER_BIT);
}

bool VideoLayerCompositor::ensureLayer(QSize pixels)
{
    if (pixels.isEmpty())
        return false;
    if (m_maxTextureSize == 0) {
        QOpenGLContext::currentContext()->functions()->glGetIntegerv(GL_MAX_TEXTURE_SIZE,
                                                                     &m_maxTextureSize);
    }
    // A picture larger than the GPU allows is drawn from a smaller one, scaled up.
    const int maxSize = m_maxTextureSize;
    if (maxSize > 0 && (pixels.width() > maxSize || pixels.height() > maxSize))
        pixels.scale(maxSize, maxSize, Qt::KeepAspectRatio);
    if (!m_layer || m_layer->size() != pixels) {
        m_layer = std::make_unique<QOpenGLFramebufferObject>(pixels);
        m_hasPicture = false;
    }
    return m_layer->isValid();
}

void VideoLayerCompositor::draw(MpvRenderContext &renderContext,
                                const DisplayGeometry::PlayerLayerFrame &frame, unsigned targetFbo,
                                QSize viewPixels, qreal ratio)
{
    const QSize layerPixels(qRound(frame.bounds.width() * ratio),
                            qRound(frame.bounds.height() * ratio));
    if (!ensureLayer(layerPixels)) {
        clear(targetFbo, viewPixels);
        return;
    }
    // mpv fills the picture's own size, cropping what overflows (panscan=1).
    renderContext.render(m_layer->handle(), m_layer->width(), m_layer->height());
    m_hasPicture = true;

    clear(targetFbo, viewPixels);
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    const QRectF crop(frame.crop.x() * ratio, frame.crop.y() * ratio, frame.crop.width() * ratio,
                      frame.crop.height() * ratio);
    const QRect clip = crop.toAlignedRect().intersected(QRect(QPoint(0, 0), viewPixels));
    if (clip.isEmpty())
        return;
    gl->glEnable(GL_SCISSOR_TEST);
    gl->glScissor(clip.x(), viewPixels.height() - clip.bottom() - 1, clip.width(), clip.height());

    // From the blitter's unit quad to view pixels (y down), then to normalised device
    // coordinates. The quad's top (+1) is the picture's top.
    const QPointF centre = crop.topLeft() + frame.position * ratio;
    QMatrix4x4 transform;
    transform.translate(-1, 1);
    transform.scale(2.0 / viewPixels.width(), -2.0 / viewPixels.height());
    transform.translate(float(centre.x()), float(centre.y()));
    // A negative angle turns clockwise on screen, as with y pointing up.
    transform.rotate(float(-qRadiansToDegrees(frame.rotation)), 0, 0, 1);
    transform.scale(float(frame.bounds.width() * ratio / 2),
                    float(-frame.bounds.height() * ratio / 2));

    if (!m_blitter.isCreated())
        m_blitter.create();
    m_blitter.bind();
    m_blitter.blit(m_layer->texture(), transform, QOpenGLTextureBlitter::OriginBottomLeft);
    m_blitter.release();
    gl->glDisable(GL_SCISSOR_TEST);
}

QImage VideoLayerCompositor::sample(int width)
{
    if (!m_layer || !m_hasPicture || width <= 0)
        return {};
    const QSize source = m_layer->size();
    const int height
        = std::max(1, int(std::lround(double(width) * source.height() / source.width())));
    const QSize size(std::min(width, source.width()), std::min(height, source.height()));
    if (!m_sample || m_sample->size() != size)
        m_sample = std::make_unique<QOpenGLFramebufferObject>(size);
    // Scaled and turned upside down on the GPU, so that the rows read back come top first and
    // the bytes are the image's as they are: the main thread copies and converts nothing.
    QOpenGLExtraFunctions *gl = QOpenGLContext::currentContext()->extraFunctions();
    gl->glBindFramebuffer(GL_READ_FRAMEBUFFER, m_layer->handle());
    gl->glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_sample->handle());
    gl->glBlitFramebuffer(0, 0, source.width(), source.height(), 0, size.height(), size.width(), 0,
                          GL_COLOR_BUFFER_BIT, GL_LINEAR);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, m_sample->handle());
    QImage image(size, QImage::Format_RGBX8888);
    gl->glPixelStorei(GL_PACK_ALIGNMENT, 4);
    gl->glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    QOpenGLFramebufferObject::bindDefault();
    return image;
}
