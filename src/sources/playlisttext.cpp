#include "playlisttext.h"

#include <QStringDecoder>

QString decodePlaylistText(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    return QString::fromLatin1(bytes);
}
