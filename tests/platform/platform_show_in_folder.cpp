// SPDX-License-Identifier: GPL-3.0-or-later
// A stand-in plays the desktop's file manager on a message bus of the test's own.
#include "platform/ShowInFolder.h"
#include "support/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QTest>

class FileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QStringList shown;

public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString&) { shown += uris; }
};

class ShowInFolderTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void fileManagerIsAskedOrTheFolderIsOpened()
    {
        int opened = 0;
        ShowInFolder::show("/srv/O1.nc", [&opened] { ++opened; });
        QTRY_COMPARE(opened, 1); // there is none yet

        FileManager manager;
        auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "file manager");
        QVERIFY(bus.registerObject("/org/freedesktop/FileManager1", &manager, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService("org.freedesktop.FileManager1"));
        ShowInFolder::show("/srv/a b/O1#2.nc", [&opened] { ++opened; });
        QTRY_COMPARE(manager.shown, QStringList("file:///srv/a%20b/O1%232.nc"));
        QCOMPARE(opened, 1);
    }
};

int main(int argc, char* argv[])
{
    const PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
    const QCoreApplication application(argc, argv);
    ShowInFolderTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "platform_show_in_folder.moc"
