#include "playlistload.h"

#include "sources/playlisterror.h"
#include "sources/playlistparser.h"
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

QString playlistTooLargeDescription(qint64 maxBytes)
{
    return QStringLiteral("The playlist is larger than %1 MB.").arg(maxBytes / (1024 * 1024));
}

QString playlistLoadStoppedDescription()
{
    return QStringLiteral("The playlist was not loaded.");
}

PlaylistLoadResult loadPlaylist(const QByteArray &bytes, const QUrl &baseURL,
                                const std::stop_token &stop)
{
    PlaylistLoadResult result;
    result.entries = PlaylistParser::parse(QByteArrayView(bytes), baseURL, {}, stop);
    if (stop.stop_requested())
        return PlaylistLoadResult::failure(playlistLoadStoppedDescription());
    if (result.entries.isEmpty()) {
        result.error = playlistErrorDescription(PlaylistError::empty);
        return result;
    }
    result.header = PlaylistHeader::read(QByteArrayView(bytes), baseURL);
    result.index = ChannelIndex::build(result.entries, stop);
    if (!result.index)
        return PlaylistLoadResult::failure(playlistLoadStoppedDescription());
    return result;
}

PlaylistLoadResult loadPlaylistFile(const QString &path, qint64 maxBytes,
                                    const std::stop_token &stop)
{
    const QString name = QFileInfo(path).fileName();
    const auto failure = [&name](const QString &reason) {
        return PlaylistLoadResult::failure(reason.arg(name));
    };
    // Opened without waiting, then checked: a named pipe or a device would otherwise block
    // the open or the read until a writer comes, which may be never.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return failure(errno == ENOENT ? QStringLiteral(
                           "The file “%1” couldn’t be opened because there is no such file.")
                                       : QStringLiteral("The file “%1” couldn’t be opened."));
    }
    QFile file;
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return failure(QStringLiteral("The file “%1” couldn’t be opened."));
    }
    struct stat status
    {
    };
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode))
        return failure(
            QStringLiteral("The file “%1” couldn’t be opened because it isn’t a regular file."));
    if (status.st_size > maxBytes)
        return PlaylistLoadResult::failure(playlistTooLargeDescription(maxBytes));
    const QByteArray bytes = file.read(maxBytes + 1);
    if (bytes.size() > maxBytes)
        return PlaylistLoadResult::failure(playlistTooLargeDescription(maxBytes));
    if (file.error() != QFileDevice::NoError)
        return failure(QStringLiteral("The file “%1” couldn’t be read."));
    return loadPlaylist(bytes, QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()), stop);
}
