#include "playlisttext.h"

#include <QStringDecoder>

QString decodePlaylistText(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    // A UTF-8 file with one stray byte still starts with the UTF-8 mark, which is no text.
    static constexpr char utf8Mark[] = "\xEF\xBB\xBF";
    const QByteArrayView body = QByteArrayView(bytes).startsWith(utf8Mark)
        ? QByteArrayView(bytes).sliced(3)
        : QByteArrayView(bytes);
    return QString::fromLatin1(body);
}
