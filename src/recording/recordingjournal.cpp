#include "recordingjournal.h"

#include "mp4finisher.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace RecordingJournal {

QString defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QStringLiteral("/LumoMediaPlayer/unfinished");
}

Entry::Entry(int descriptor, QString file)
    : m_descriptor(descriptor)
    , m_file(std::move(file))
{ }

Entry::~Entry()
{
    // Removed while still locked, so a recovery never finds it half gone.
    ::unlink(QFile::encodeName(m_file).constData());
    ::close(m_descriptor);
}

std::unique_ptr<Entry> Entry::begin(const QString &folder, const QString &recordingPath)
{
    if (!QDir().mkpath(folder))
        return nullptr;
    const QString file = QDir(folder).filePath(QStringLiteral("%1-%2.recording")
                                                   .arg(QDateTime::currentMSecsSinceEpoch())
                                                   .arg(QCoreApplication::applicationPid()));
    const int descriptor = ::open(QFile::encodeName(file).constData(),
                                  O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return nullptr;
    std::unique_ptr<Entry> entry(new Entry(descriptor, file));
    const QByteArray text = recordingPath.toUtf8();
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0
        || ::write(descriptor, text.constData(), size_t(text.size())) != text.size())
        return nullptr;
    return entry;
}

QList<Recovery> recoverAll(const QString &folder)
{
    QList<Recovery> recoveries;
    const QDir dir(folder);
    for (const QString &name :
         dir.entryList({QStringLiteral("*.recording")}, QDir::Files | QDir::Hidden)) {
        const QByteArray file = QFile::encodeName(dir.filePath(name));
        const int descriptor = ::open(file.constData(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0)
            continue;
        // Held: the recording is still running in another player.
        if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            ::close(descriptor);
            continue;
        }
        QFile entry;
        QString path;
        if (entry.open(descriptor, QIODevice::ReadOnly, QFileDevice::DontCloseHandle))
            path = QString::fromUtf8(entry.read(64 * 1024));
        entry.close();
        Recovery recovery {path, {}, false};
        if (!path.isEmpty()) {
            // A finished copy cut off halfway is of no use; the recording it came from is.
            QFile::remove(Mp4Finisher::finishingPath(path));
            if (Mp4Finisher::isFragmented(path)) {
                recovery.error = Mp4Finisher::finishInPlace(path);
                recovery.finished = recovery.error.isEmpty();
            }
        }
        ::unlink(file.constData());
        ::close(descriptor);
        if (!path.isEmpty())
            recoveries.append(recovery);
    }
    return recoveries;
}

} // namespace RecordingJournal
