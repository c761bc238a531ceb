#include "icons.h"

#include <QHash>
#include <QPainter>
#include <QPixmap>

namespace Icons {

QFont font(int pixelSize)
{
    QFont result(QString::fromLatin1(fontFamily));
    result.setPixelSize(pixelSize);
    return result;
}

namespace {

const QHash<QString, char16_t> &glyphs()
{
    // Code points of the Material Icons font.
    static const QHash<QString, char16_t> table {
        {QStringLiteral("play.rectangle"), 0xe41b}, // slideshow
        {QStringLiteral("backward.fill"), 0xe020}, // fast_rewind
        {QStringLiteral("forward.fill"), 0xe01f}, // fast_forward
        {QStringLiteral("play.fill"), 0xe037}, // play_arrow
        {QStringLiteral("pause.fill"), 0xe034}, // pause
        {QStringLiteral("stop.fill"), 0xe047}, // stop
        {QStringLiteral("list.bullet"), 0xe241}, // format_list_bulleted
        {QStringLiteral("speaker.slash.fill"), 0xe04f}, // volume_off
        {QStringLiteral("speaker.wave.2.fill"), 0xe050}, // volume_up
        {QStringLiteral("record.circle"), 0xe837}, // radio_button_checked
        {QStringLiteral("record.circle.fill"), 0xe061}, // fiber_manual_record
        {QStringLiteral("arrow.up.left.and.arrow.down.right"), 0xe5d0}, // fullscreen
        {QStringLiteral("arrow.down.right.and.arrow.up.left"), 0xe5d1}, // fullscreen_exit
        {QStringLiteral("checkmark"), 0xe5ca}, // check
        {QStringLiteral("checkmark.circle.fill"), 0xe86c}, // check_circle
        {QStringLiteral("rectangle"), 0xe3c3}, // crop_landscape
        {QStringLiteral("rectangle.portrait.fill"), 0xe3c5}, // crop_portrait
        {QStringLiteral("rotate.right"), 0xe41a}, // rotate_right
        {QStringLiteral("hand.draw"), 0xe925}, // pan_tool
        {QStringLiteral("viewfinder"), 0xe3b4}, // center_focus_strong
        {QStringLiteral("globe"), 0xe80b}, // public
        {QStringLiteral("chevron.down"), 0xe5cf}, // expand_more
        {QStringLiteral("chevron.right"), 0xe5cc}, // chevron_right
        {QStringLiteral("square.grid.2x2"), 0xe5c3}, // apps
        {QStringLiteral("tv"), 0xe333}, // tv
        {QStringLiteral("tv.fill"), 0xe639}, // live_tv
        {QStringLiteral("xmark.circle.fill"), 0xe5c9}, // cancel
        {QStringLiteral("captions.bubble"), 0xe048}, // subtitles
    };
    return table;
}

} // namespace

QString glyph(QStringView symbol)
{
    const auto found = glyphs().constFind(symbol.toString());
    return found == glyphs().cend() ? QString() : QString(QChar(*found));
}

QStringList symbols()
{
    QStringList names = glyphs().keys();
    names.sort();
    return names;
}

QIcon icon(QStringView symbol, const QColor &colour, int pixelSize)
{
    // Drawn at twice the size so that menus stay sharp on high-density screens.
    constexpr int scale = 2;
    QPixmap pixmap(pixelSize * scale, pixelSize * scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setPen(colour);
    painter.setFont(font(pixelSize * scale));
    painter.drawText(pixmap.rect(), Qt::AlignCenter, glyph(symbol));
    painter.end();
    pixmap.setDevicePixelRatio(scale);
    return QIcon(pixmap);
}

} // namespace Icons
