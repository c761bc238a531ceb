#pragma once
// A session bus of the test's own (dbus-daemon), made the session bus of this process before
// anything connects to one, and ended with the test.
#include <QProcess>
#include <QString>

class PrivateSessionBus
{
public:
    PrivateSessionBus();
    ~PrivateSessionBus();
    PrivateSessionBus(const PrivateSessionBus &) = delete;
    PrivateSessionBus &operator=(const PrivateSessionBus &) = delete;

    // Empty when the daemon did not start.
    QString address() const { return m_address; }

private:
    QProcess m_daemon;
    QString m_address;
};
