#pragma once
// Reads back what a GL view has just drawn without making the draw wait: the pixels are copied
// into a pixel buffer on the GPU during the paint and fetched on a later turn of the event loop.
// Every call needs the view's GL context current.
#include <QImage>
#include <QSize>

class FramebufferReadback final
{
public:
    FramebufferReadback() = default;
    ~FramebufferReadback();
    FramebufferReadback(const FramebufferReadback &) = delete;
    FramebufferReadback &operator=(const FramebufferReadback &) = delete;

    // Starts copying the framebuffer fbo of the given pixel size.
    void start(unsigned fbo, QSize pixels);
    bool isPending() const { return m_pending; }
    // The copied picture, rows from the bottom; null when nothing was started.
    QImage take();
    // Frees the buffer; the next start makes a new one.
    void release();

private:
    unsigned m_buffer = 0;
    QSize m_bufferSize;
    QSize m_pixels;
    bool m_pending = false;
};
