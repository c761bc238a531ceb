#include "singleinstance.h"

#include "launchmessage.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int startingPlayerWaitMs = 10'000;
constexpr int replyWaitMs = 5'000;
// A busy player (a huge playlist being read) may answer late; the arguments are sent once and
// the answer waited for this long before this launch opens a window of its own.
constexpr int answerWaitMs = 30'000;
// A client that connects and says nothing is let go after this long.
constexpr int idleClientMs = 5'000;

// Makes folder (mode 0700) unless it is there, and says whether it is private to this user: a
// directory, not a link, owned by this user and closed to everyone else. A folder another user
// prepared would hand them every launch's arguments.
bool isPrivateFolder(const QString &folder)
{
    const QByteArray path = QFile::encodeName(folder);
    if (mkdir(path.constData(), 0700) != 0 && errno != EEXIST)
        return false;
    struct stat info
    {
    };
    if (lstat(path.constData(), &info) != 0)
        return false;
    return S_ISDIR(info.st_mode) && info.st_uid == getuid() && (info.st_mode & 077) == 0;
}
} // namespace

SingleInstance::SingleInstance(const QString &folder, QObject *parent)
    : QObject(parent)
    , m_folder(folder)
    , m_lock(QDir(folder).filePath(QStringLiteral("LumoMediaPlayer.lock")))
{
    // Stale only when the process that took it is gone, however long a player runs.
    m_lock.setStaleLockTime(0);
}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::defaultFolder()
{
    // Per user and private to them (XDG_RUNTIME_DIR, or a folder Qt makes for the user); a
    // per-user folder in the temporary one when neither can be had.
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (!runtime.isEmpty())
        return runtime;
    return QDir::temp().filePath(QStringLiteral("LumoMediaPlayer-%1").arg(getuid()));
}

QString SingleInstance::socketPath() const
{
    return QDir(m_folder).filePath(QStringLiteral("LumoMediaPlayer.socket"));
}

SingleInstance::Role SingleInstance::claim(const QStringList &arguments,
                                           const QString &workingDirectory)
{
    if (!isPrivateFolder(m_folder)) {
        qWarning("%s is not private to this user; this player runs alone and later launches "
                 "open windows of their own.",
                 qPrintable(m_folder));
        return Role::running;
    }
    // The lock decides: of two launches at once exactly one gets it.
    const QDeadlineTimer deadline(startingPlayerWaitMs);
    while (!m_lock.tryLock(0)) {
        // A folder that takes no lock leaves nothing to share: this player runs alone.
        if (m_lock.error() != QLockFile::LockFailedError) {
            qWarning("The player's lock cannot be taken in %s; later launches open windows of "
                     "their own.",
                     qPrintable(m_folder));
            return Role::running;
        }
        // Another player holds it: it runs, or is starting and listens soon.
        switch (handOver(arguments, workingDirectory)) {
        case HandOver::delivered:
            return Role::handedOver;
        case HandOver::unanswered:
            qWarning("The running player did not take this launch's request; opening another "
                     "window.");
            return Role::running;
        case HandOver::notReached:
            break;
        }
        if (deadline.hasExpired()) {
            // A player that neither answers nor ends: better a second window than nothing.
            qWarning("The running player does not answer; opening another window.");
            return Role::running;
        }
        QThread::msleep(100);
    }
    listen();
    return Role::running;
}

void SingleInstance::listen()
{
    // A socket left by a player that crashed is in the way; the lock says it is not in use.
    QLocalServer::removeServer(socketPath());
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(socketPath())) {
        qWarning("Later launches cannot reach this player: %s",
                 qPrintable(m_server->errorString()));
        return;
    }
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server->nextPendingConnection())
            receive(socket);
    });
}

void SingleInstance::receive(QLocalSocket *socket)
{
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    QTimer::singleShot(idleClientMs, socket, [socket] {
        // A whole request that waited for a busy interface is still answered.
        if (!socket->canReadLine())
            socket->abort();
    });
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
        if (!socket->canReadLine()) {
            // A sender that never ends its line is not a player; it does not fill memory.
            if (socket->bytesAvailable() > LaunchMessage::maximumBytes)
                socket->abort();
            return;
        }
        const auto message = LaunchMessage::decode(socket->readLine());
        socket->write(message ? "ok\n" : "refused\n");
        socket->flush();
        socket->disconnectFromServer();
        if (message)
            Q_EMIT openRequested(message->arguments, message->workingDirectory);
    });
}

SingleInstance::HandOver SingleInstance::handOver(const QStringList &arguments,
                                                  const QString &workingDirectory)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath());
    if (!socket.waitForConnected(500))
        return HandOver::notReached;
    socket.write(LaunchMessage::encode({arguments, workingDirectory}));
    if (!socket.waitForBytesWritten(replyWaitMs))
        return HandOver::notReached;
    // Sent: from here on the answer is awaited, never the request sent again, so the player
    // cannot open the file twice.
    QDeadlineTimer answer(answerWaitMs);
    while (!socket.canReadLine() && socket.state() == QLocalSocket::ConnectedState
           && !answer.hasExpired())
        socket.waitForReadyRead(int(qMin<qint64>(answer.remainingTime(), 1000)));
    if (socket.canReadLine())
        return socket.readLine().trimmed() == "ok" ? HandOver::delivered : HandOver::unanswered;
    // Gone without a word: it did not take the request, and the lock says whether it still
    // runs.
    return answer.hasExpired() ? HandOver::unanswered : HandOver::notReached;
}
