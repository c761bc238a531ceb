#include "windowaspecthint.h"

#include <QGuiApplication>
#include <QWidget>
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <xcb/xcb.h>

namespace {

// Field indexes and flags of WM_SIZE_HINTS.
constexpr std::size_t flagsField = 0;
constexpr std::size_t minAspectNumerator = 11;
constexpr std::size_t minAspectDenominator = 12;
constexpr std::size_t maxAspectNumerator = 13;
constexpr std::size_t maxAspectDenominator = 14;
constexpr std::size_t baseWidth = 15;
constexpr std::size_t baseHeight = 16;
constexpr std::uint32_t aspectFlag = 1u << 7;
constexpr std::uint32_t baseSizeFlag = 1u << 8;

} // namespace

WindowAspectHint::SizeHints WindowAspectHint::withAspect(SizeHints hints, QSize picture, QSize base)
{
    if (picture.isEmpty()) {
        hints[flagsField] &= ~aspectFlag;
        return hints;
    }
    hints[flagsField] |= aspectFlag | baseSizeFlag;
    hints[minAspectNumerator] = hints[maxAspectNumerator] = std::uint32_t(picture.width());
    hints[minAspectDenominator] = hints[maxAspectDenominator] = std::uint32_t(picture.height());
    hints[baseWidth] = static_cast<std::uint32_t>(std::max(base.width(), 0));
    hints[baseHeight] = static_cast<std::uint32_t>(std::max(base.height(), 0));
    return hints;
}

bool WindowAspectHint::isAvailable()
{
    // Qt's offscreen platform also answers to the X11 interface when it draws through GLX.
    return QGuiApplication::platformName() == u"xcb"
        && qGuiApp->nativeInterface<QNativeInterface::QX11Application>() != nullptr;
}

void WindowAspectHint::apply(QWidget *window, QSize picture, QSize base)
{
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!isAvailable() || !x11 || !window || !window->windowHandle())
        return;
    xcb_connection_t *connection = x11->connection();
    const auto id = static_cast<xcb_window_t>(window->winId());
    SizeHints hints {};
    const xcb_get_property_cookie_t cookie = xcb_get_property(
        connection, 0, id, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 0, hints.size());
    if (xcb_get_property_reply_t *reply = xcb_get_property_reply(connection, cookie, nullptr)) {
        const int length = xcb_get_property_value_length(reply);
        if (reply->format == 32 && length > 0) {
            std::memcpy(hints.data(), xcb_get_property_value(reply),
                        std::min<std::size_t>(std::size_t(length), sizeof(hints)));
        }
        std::free(reply);
    }
    hints = withAspect(hints, picture, base);
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
    xcb_flush(connection);
}
