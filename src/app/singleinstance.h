#pragma once
// One player per user: the first launch holds a lock and listens on a local socket in the
// user's runtime folder; a later launch hands its arguments to it and ends.
#include <QLockFile>
#include <QObject>
#include <QStringList>

class QLocalServer;
class QLocalSocket;

class SingleInstance final : public QObject
{
    Q_OBJECT

public:
    enum class Role {
        running, // this process is the player; requests arrive through openRequested
        handedOver, // another player took the arguments: this process ends
    };

    // folder holds the lock and the socket; the default is the user's runtime folder.
    explicit SingleInstance(const QString &folder = defaultFolder(), QObject *parent = nullptr);
    ~SingleInstance() override;

    static QString defaultFolder();
    QString socketPath() const;

    // Becomes the running player, or hands arguments, given in workingDirectory, to the one
    // that runs. Waits a few seconds at most for a player that is still starting.
    Role claim(const QStringList &arguments, const QString &workingDirectory);

Q_SIGNALS:
    void openRequested(const QStringList &arguments, const QString &workingDirectory);

private:
    void listen();
    enum class HandOver {
        delivered, // the running player took the arguments
        notReached, // no player listened, or it went away before answering: try again
        unanswered, // sent, but refused or never answered: never sent twice
    };
    HandOver handOver(const QStringList &arguments, const QString &workingDirectory);
    void receive(QLocalSocket *socket);

    QString m_folder;
    QLockFile m_lock;
    QLocalServer *m_server = nullptr;
};
