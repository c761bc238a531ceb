#include "singleinstance.h"

#include "launchmessage.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int startingPlayerWaitMs = 10'000;
constexpr int replyWaitMs = 5'000;

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
        if (handOver(arguments, workingDirectory))
            return Role::handedOver;
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

bool SingleInstance::handOver(const QStringList &arguments, const QString &workingDirectory)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath());
    if (!socket.waitForConnected(500))
        return false;
    socket.write(LaunchMessage::encode({arguments, workingDirectory}));
    if (!socket.waitForBytesWritten(replyWaitMs))
        return false;
    QDeadlineTimer reply(replyWaitMs);
    while (!socket.canReadLine() && socket.waitForReadyRead(int(reply.remainingTime()))) { }
    return socket.readLine().trimmed() == "ok";
}
