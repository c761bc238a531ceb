#pragma once
// A session bus of the test's own (dbus-daemon), made the session bus of this process before
// anything connects to one, and ended with the test.
#include <QProcess>
#include <QString>
#include <QTest>
#ifdef QT_WIDGETS_LIB
#include <QApplication>
using PrivateSessionBusTestApplication = QApplication;
#else
#include <QGuiApplication>
using PrivateSessionBusTestApplication = QGuiApplication;
#endif

class PrivateSessionBus
{
public:
    PrivateSessionBus();
    ~PrivateSessionBus();
    PrivateSessionBus(const PrivateSessionBus &) = delete;
    PrivateSessionBus &operator=(const PrivateSessionBus &) = delete;

    // The one made by PRIVATE_SESSION_BUS_TEST_MAIN; null elsewhere.
    static PrivateSessionBus *current();

    // Empty when the daemon did not start.
    QString address() const { return m_address; }
    // True when QDBusConnection::sessionBus() of this process is connected to this bus.
    bool isSessionBusOfThisProcess() const;

private:
    QProcess m_daemon;
    QString m_address;
};

// A test's main that starts the private bus before the application: Qt's platform plugin (xcb
// from Qt 6.8) connects to the session bus while the application is made.
#define PRIVATE_SESSION_BUS_TEST_MAIN(TestObject)                                                  \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        PrivateSessionBus bus;                                                                     \
        PrivateSessionBusTestApplication app(argc, argv);                                          \
        app.setAttribute(Qt::AA_Use96Dpi, true);                                                   \
        TestObject test;                                                                           \
        QTEST_SET_MAIN_SOURCE_PATH                                                                 \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
