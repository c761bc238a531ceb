// "Show in File Manager" asks the desktop's file manager, through the freedesktop FileManager1
// interface on the session bus, to show the saved recording selected. A file manager of the
// test's own answers on a private bus.
#include "privatesessionbus.h"
#include "ui/recordingalerts.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QTest>

class FakeFileManager final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QList<QStringList> shown;
    QStringList startupIds;

public Q_SLOTS:
    void ShowItems(const QStringList &uris, const QString &startupId)
    {
        shown.append(uris);
        startupIds.append(startupId);
    }
};

class TestFileManagerReveal : public QObject
{
    Q_OBJECT

private:
    PrivateSessionBus *m_bus = PrivateSessionBus::current();

private Q_SLOTS:
    void theFileManagerShowsTheSavedFile()
    {
        QVERIFY2(m_bus && !m_bus->address().isEmpty(), "dbus-daemon is missing: run ./lumo setup");
        QVERIFY(m_bus->isSessionBusOfThisProcess());
        FakeFileManager manager;
        QDBusConnection bus = QDBusConnection::sessionBus();
        QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager,
                                   QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
        RecordingAlerts::revealInFileManager(QStringLiteral("/tmp/My Recording #1.mp4"));
        QTRY_COMPARE(manager.shown.size(), 1);
        QCOMPARE(manager.shown.constFirst(),
                 QStringList {QStringLiteral("file:///tmp/My Recording %231.mp4")});
        QCOMPARE(manager.startupIds.constFirst(), QString());
        bus.unregisterService(QStringLiteral("org.freedesktop.FileManager1"));
    }
};

PRIVATE_SESSION_BUS_TEST_MAIN(TestFileManagerReveal)
#include "tst_filemanagerreveal.moc"
