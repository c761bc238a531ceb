#include "playlistload.h"

#include "sources/playlisterror.h"
#include "sources/playlistparser.h"
#include "sources/playlisttext.h"
#include <QFile>
#include <QFileInfo>

QString playlistTooLargeDescription(qint64 maxBytes)
{
    return QStringLiteral("The playlist is larger than %1 MB.").arg(maxBytes / (1024 * 1024));
}

PlaylistLoadResult loadPlaylist(const QByteArray &bytes, const QUrl &baseURL)
{
    PlaylistLoadResult result;
    result.entries = PlaylistParser::parse(decodePlaylistText(bytes), baseURL);
    if (result.entries.isEmpty())
        result.error = playlistErrorDescription(PlaylistError::empty);
    return result;
}

PlaylistLoadResult loadPlaylistFile(const QString &path, qint64 maxBytes)
{
    QFile file(path);
    const QString name = QFileInfo(path).fileName();
    if (!file.open(QIODevice::ReadOnly)) {
        const QString reason = file.exists()
            ? QStringLiteral("The file “%1” couldn’t be opened.")
            : QStringLiteral("The file “%1” couldn’t be opened because there is no such file.");
        return {{}, reason.arg(name)};
    }
    if (file.size() > maxBytes)
        return {{}, playlistTooLargeDescription(maxBytes)};
    const QByteArray bytes = file.read(maxBytes + 1);
    if (bytes.size() > maxBytes)
        return {{}, playlistTooLargeDescription(maxBytes)};
    if (file.error() != QFileDevice::NoError)
        return {{}, QStringLiteral("The file “%1” couldn’t be read.").arg(name)};
    return loadPlaylist(bytes, QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
}
