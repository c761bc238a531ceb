#include "privatesessionbus.h"

PrivateSessionBus::PrivateSessionBus()
{
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--session"), QStringLiteral("--nofork"),
                    QStringLiteral("--print-address=1")});
    if (!m_daemon.waitForStarted() || !m_daemon.waitForReadyRead(10'000))
        return;
    m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_address.toUtf8());
}

PrivateSessionBus::~PrivateSessionBus()
{
    m_daemon.kill();
    m_daemon.waitForFinished(5000);
}
