#include "expandedplaylist.h"

#include "sources/sourceaddress.h"
#include <mpv/client.h>

namespace {

const mpv_node *member(const mpv_node &map, QByteArrayView key)
{
    if (map.format != MPV_FORMAT_NODE_MAP)
        return nullptr;
    for (int i = 0; i < map.u.list->num; ++i) {
        if (QByteArrayView(map.u.list->keys[i]) == key)
            return &map.u.list->values[i];
    }
    return nullptr;
}

} // namespace

QUrl ExpandedPlaylist::entryUrl(QByteArrayView filename)
{
    const QString text = QString::fromUtf8(filename);
    if (text.startsWith(u'/'))
        return QUrl::fromLocalFile(text);
    const QUrl url(text, QUrl::StrictMode);
    return url.isRelative() ? QUrl() : url;
}

namespace {

// The entries of mpv's "playlist" property whose ids are firstID to firstID + count - 1.
QList<const mpv_node *> inserted(const mpv_node &playlist, qint64 firstID, qint64 count)
{
    QList<const mpv_node *> entries;
    if (playlist.format != MPV_FORMAT_NODE_ARRAY)
        return entries;
    for (int i = 0; i < playlist.u.list->num; ++i) {
        const mpv_node &entry = playlist.u.list->values[i];
        const mpv_node *id = member(entry, "id");
        if (id && id->format == MPV_FORMAT_INT64 && id->u.int64 >= firstID
            && id->u.int64 < firstID + count)
            entries.append(&entry);
    }
    return entries;
}

} // namespace

bool ExpandedPlaylist::hasTitledEntries(const mpv_node &playlist, qint64 firstID, qint64 count)
{
    for (const mpv_node *entry : inserted(playlist, firstID, count)) {
        const mpv_node *title = member(*entry, "title");
        if (title && title->format == MPV_FORMAT_STRING && title->u.string[0] != '\0')
            return true;
    }
    return false;
}

QList<QUrl> ExpandedPlaylist::insertedEntries(const mpv_node &playlist, qint64 firstID,
                                              qint64 count, bool listedInLocalFile)
{
    QList<QUrl> entries;
    for (const mpv_node *entry : inserted(playlist, firstID, count)) {
        const mpv_node *filename = member(*entry, "filename");
        if (!filename || filename->format != MPV_FORMAT_STRING)
            continue;
        const QUrl url = entryUrl(filename->u.string);
        if (SourceAddress::isPlayableChannelAddress(url, listedInLocalFile))
            entries.append(url);
    }
    return entries;
}
