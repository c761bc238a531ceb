#include "mpvframegrabber.h"

#include "facedetectors.h"
#include "model/mpvnode.h"

#include <mpv/client.h>

namespace {

// How long one wait for mpv's reply lasts before the stop flag is looked at again.
constexpr double pollSeconds = 0.05;
// A frame that has not come in this many polls is given up: the next sample asks again.
constexpr int maxPolls = 40;

const mpv_node *member(const mpv_node &map, const char *key)
{
    if (map.format != MPV_FORMAT_NODE_MAP || !map.u.list)
        return nullptr;
    for (int i = 0; i < map.u.list->num; ++i) {
        if (qstrcmp(map.u.list->keys[i], key) == 0)
            return &map.u.list->values[i];
    }
    return nullptr;
}

qint64 integer(const mpv_node &map, const char *key)
{
    const mpv_node *value = member(map, key);
    return value && value->format == MPV_FORMAT_INT64 ? value->u.int64 : -1;
}

// mpv's raw picture (bgr0: B, G, R, 0 in memory) scaled into a new image.
QImage sampleFrom(const mpv_node &result)
{
    const mpv_node *format = member(result, "format");
    const mpv_node *data = member(result, "data");
    const qint64 width = integer(result, "w");
    const qint64 height = integer(result, "h");
    const qint64 stride = integer(result, "stride");
    if (!format || format->format != MPV_FORMAT_STRING || qstrcmp(format->u.string, "bgr0") != 0
        || !data || data->format != MPV_FORMAT_BYTE_ARRAY || width <= 0 || height <= 0
        || width > 16384 || height > 16384 || stride < width * 4
        || qint64(data->u.ba->size) < stride * height)
        return {};
    // Wrapped, not copied: the sample is the only copy made.
    const QImage frame(static_cast<const uchar *>(data->u.ba->data), int(width), int(height),
                       qsizetype(stride), QImage::Format_RGB32);
    return FaceDetectors::sampleOf(frame);
}

} // namespace

MpvFrameGrabber::MpvFrameGrabber(mpv_handle *core)
    : m_core(core)
{ }

bool MpvFrameGrabber::connectToCore()
{
    // Made on the grabbing thread: mpv answers through its core thread, which may be busy
    // loading, and the window's thread must not wait for it.
    m_client = mpv_create_weak_client(m_core, "lumo-frames");
    if (!m_client)
        return false;
    // Only the replies to its own requests matter here; nobody reads the rest.
    for (int id = MPV_EVENT_SHUTDOWN + 1; id <= MPV_EVENT_HOOK; ++id) {
        if (id != MPV_EVENT_COMMAND_REPLY)
            mpv_request_event(m_client, mpv_event_id(id), 0);
    }
    // Screenshots from the decoded frame, not from the renderer: the renderer works on the
    // window's thread, which this must never wait for.
    mpv_set_property_string(m_client, "screenshot-sw", "yes");
    return true;
}

MpvFrameGrabber::~MpvFrameGrabber()
{
    if (m_client)
        mpv_destroy(m_client);
}

QImage MpvFrameGrabber::grab()
{
    if (!m_core || m_stopped)
        return {};
    if (!m_client && !connectToCore())
        return {};
    const quint64 request = ++m_requests;
    MpvNode command(QVariantMap {{QStringLiteral("name"), QStringLiteral("screenshot-raw")},
                                 {QStringLiteral("flags"), QStringLiteral("video")}});
    if (mpv_command_node_async(m_client, request, command.get()) < 0)
        return {};
    for (int poll = 0; poll < maxPolls && !m_stopped; ++poll) {
        const mpv_event *event = mpv_wait_event(m_client, pollSeconds);
        if (event->event_id == MPV_EVENT_SHUTDOWN)
            return {};
        if (event->event_id != MPV_EVENT_COMMAND_REPLY || event->reply_userdata != request)
            continue;
        if (event->error < 0)
            return {};
        const auto *reply = static_cast<const mpv_event_command *>(event->data);
        return sampleFrom(reply->result);
    }
    // Given up: the reply, should it come, is told apart by its number.
    return {};
}
