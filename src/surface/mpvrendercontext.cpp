#include "mpvrendercontext.h"

#include "mpvframetime.h"

#include <QOpenGLContext>
#include <mpv/render_gl.h>

void MpvRenderContext::Deleter::operator()(mpv_render_context *context) const
{
    mpv_render_context_free(context);
}

MpvRenderContext::MpvRenderContext(mpv_handle *handle, std::function<void()> onUpdate)
    : m_onUpdate(std::move(onUpdate))
    , m_handle(handle)
    , m_clientApiVersion(mpv_client_api_version())
{
    mpv_opengl_init_params glInit {};
    glInit.get_proc_address = [](void *, const char *name) -> void * {
        QOpenGLContext *context = QOpenGLContext::currentContext();
        return context ? reinterpret_cast<void *>(context->getProcAddress(name)) : nullptr;
    };
    char apiType[] = MPV_RENDER_API_TYPE_OPENGL;
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_API_TYPE, apiType},
        {MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &glInit},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    mpv_render_context *context = nullptr;
    if (mpv_render_context_create(&context, handle, params) < 0)
        return;
    m_context.reset(context);
    mpv_render_context_set_update_callback(
        context, [](void *self) { static_cast<MpvRenderContext *>(self)->m_onUpdate(); }, this);
}

MpvRenderContext::~MpvRenderContext()
{
    if (m_context)
        mpv_render_context_set_update_callback(m_context.get(), nullptr, nullptr);
}

bool MpvRenderContext::takeFrameUpdate()
{
    return m_context && (mpv_render_context_update(m_context.get()) & MPV_RENDER_UPDATE_FRAME);
}

void MpvRenderContext::render(unsigned fbo, int width, int height)
{
    if (!m_context)
        return;
    mpv_opengl_fbo target {static_cast<int>(fbo), width, height, 0};
    int flipY = 1;
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_OPENGL_FBO, &target},
        {MPV_RENDER_PARAM_FLIP_Y, &flipY},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    mpv_render_context_render(m_context.get(), params);
}

std::optional<std::chrono::steady_clock::time_point> MpvRenderContext::nextFrameTarget() const
{
    if (!m_context)
        return std::nullopt;
    mpv_render_frame_info info {};
    mpv_render_param params[] = {
        {MPV_RENDER_PARAM_NEXT_FRAME_INFO, &info},
        {MPV_RENDER_PARAM_INVALID, nullptr},
    };
    if (mpv_render_context_get_info(m_context.get(), params[0]) < 0
        || !(info.flags & MPV_RENDER_FRAME_INFO_PRESENT) || info.target_time <= 0)
        return std::nullopt;
    // mpv's clock is the monotonic clock with its own zero: carried over through now.
    // mpv_get_time_us exists in every version; the target's unit depends on the version.
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::nanoseconds mpvNow = std::chrono::microseconds(mpv_get_time_us(m_handle));
    const std::chrono::nanoseconds target
        = MpvFrameTime::toDuration(info.target_time, m_clientApiVersion);
    return now + std::chrono::duration_cast<std::chrono::steady_clock::duration>(target - mpvNow);
}

void MpvRenderContext::reportSwap()
{
    if (m_context)
        mpv_render_context_report_swap(m_context.get());
}
