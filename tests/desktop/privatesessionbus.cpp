#include "privatesessionbus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

namespace {
PrivateSessionBus *s_current = nullptr;
}

PrivateSessionBus::PrivateSessionBus()
{
    if (!s_current)
        s_current = this;
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
    if (s_current == this)
        s_current = nullptr;
    m_daemon.kill();
    m_daemon.waitForFinished(5000);
}

PrivateSessionBus *PrivateSessionBus::current()
{
    return s_current;
}

bool PrivateSessionBus::isSessionBusOfThisProcess() const
{
    const QString name = QStringLiteral("lumo-private-bus-check");
    bool owned = false;
    {
        QDBusConnection probe = QDBusConnection::connectToBus(m_address, name);
        const QString ours = QDBusConnection::sessionBus().baseService();
        owned = probe.isConnected() && !ours.isEmpty()
            && probe.interface()->isServiceRegistered(ours).value();
    }
    QDBusConnection::disconnectFromBus(name);
    return owned;
}
