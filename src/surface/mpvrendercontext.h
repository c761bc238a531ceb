#pragma once
// Owns an mpv OpenGL render context. Make, draw and destroy it with its GL context current, and
// destroy it before the mpv handle it was made on.
#include <QObject>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

struct mpv_handle;
struct mpv_render_context;

class MpvRenderContext final
{
public:
    // Needs the GL context current. onUpdate is called on mpv's threads when a new frame is
    // ready; it may only queue work.
    MpvRenderContext(mpv_handle *handle, std::function<void()> onUpdate);
    ~MpvRenderContext();
    MpvRenderContext(const MpvRenderContext &) = delete;
    MpvRenderContext &operator=(const MpvRenderContext &) = delete;

    bool isValid() const { return m_context != nullptr; }
    // True when mpv has a new frame to draw since the last render.
    bool takeFrameUpdate();
    // Draws the current frame into the framebuffer object fbo of the given pixel size.
    void render(unsigned fbo, int width, int height);
    // When the next frame is meant to be seen, if mpv has one with a time; a frame drawn
    // early or late is still the picture of that moment.
    std::optional<std::chrono::steady_clock::time_point> nextFrameTarget() const;
    // Tells mpv the frame was put on screen, which keeps its timing honest.
    void reportSwap();

private:
    struct Deleter
    {
        void operator()(mpv_render_context *context) const;
    };
    std::unique_ptr<mpv_render_context, Deleter> m_context;
    std::function<void()> m_onUpdate;
    mpv_handle *m_handle = nullptr;
    unsigned long m_clientApiVersion = 0; // of the libmpv in use, which sets the time unit
};
