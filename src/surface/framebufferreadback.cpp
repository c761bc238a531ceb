#include "framebufferreadback.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <cstring>

FramebufferReadback::~FramebufferReadback()
{
    // The buffer goes with its context; release() frees it while that context still exists.
}

void FramebufferReadback::start(unsigned fbo, QSize pixels)
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    if (!context || pixels.isEmpty())
        return;
    QOpenGLExtraFunctions *gl = context->extraFunctions();
    if (!m_buffer)
        gl->glGenBuffers(1, &m_buffer);
    gl->glBindBuffer(GL_PIXEL_PACK_BUFFER, m_buffer);
    if (m_bufferSize != pixels) {
        gl->glBufferData(GL_PIXEL_PACK_BUFFER, GLsizeiptr(pixels.width()) * pixels.height() * 4,
                         nullptr, GL_STREAM_READ);
        m_bufferSize = pixels;
    }
    gl->glBindFramebuffer(GL_READ_FRAMEBUFFER, fbo);
    gl->glPixelStorei(GL_PACK_ALIGNMENT, 4);
    gl->glReadPixels(0, 0, pixels.width(), pixels.height(), GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    gl->glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    m_pixels = pixels;
    m_pending = true;
}

QImage FramebufferReadback::take()
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    if (!m_pending || !context)
        return {};
    m_pending = false;
    QOpenGLExtraFunctions *gl = context->extraFunctions();
    const qsizetype bytes = qsizetype(m_pixels.width()) * m_pixels.height() * 4;
    gl->glBindBuffer(GL_PIXEL_PACK_BUFFER, m_buffer);
    const void *mapped = gl->glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, bytes, GL_MAP_READ_BIT);
    QImage image;
    if (mapped) {
        image = QImage(m_pixels, QImage::Format_RGBX8888);
        std::memcpy(image.bits(), mapped, size_t(bytes));
        gl->glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
    }
    gl->glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    return image;
}

void FramebufferReadback::release()
{
    if (m_buffer) {
        if (QOpenGLContext *context = QOpenGLContext::currentContext())
            context->extraFunctions()->glDeleteBuffers(1, &m_buffer);
    }
    m_buffer = 0;
    m_bufferSize = QSize();
    m_pending = false;
}
