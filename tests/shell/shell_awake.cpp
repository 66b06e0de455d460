// SPDX-License-Identifier: GPL-3.0-or-later
// The computer stays awake during transfers; a stand-in plays the login manager on a message bus of the test's own.
#include "config/g.h"
#include "shell/AwakeKeeper.h"
#include "shell/viewMC.h"
#include "support/PrivateBus.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusUnixFileDescriptor>
#include <QLabel>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

/// Hands out the writing end of a pipe as a lock: when the last copy of it is closed the pipe is at its end.
class LoginManager : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public:
    QStringList asked;
    bool refuses = false;

    bool isHeld() const
    {
        char byte;
        return reader_ >= 0 && ::read(reader_, &byte, 1) != 0; // nothing to read yet is an error, its end is 0
    }

public Q_SLOTS:
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString&, const QString& mode)
    {
        asked += QStringList{what, who, mode}.join(QLatin1Char(' '));
        if (refuses) {
            sendErrorReply(QDBusError::AccessDenied);
            return {};
        }
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) qFatal("no pipe");
        if (reader_ >= 0) ::close(reader_);
        reader_ = ends[0];
        const QDBusUnixFileDescriptor lock(ends[1]);
        ::close(ends[1]);
        return lock;
    }

private:
    int reader_ = -1;
};

class AwakeTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void awakeWhileAMachineWorks_data();
    void awakeWhileAMachineWorks();
    void untilTheLastTransferHasEnded();
    void nothingFailsWithoutPermission();

private:
    viewMC& machine(qsizetype index) { return *dynamic_cast<viewMC*>(g::mcIcons[index].get()); }

    LoginManager manager_;
    QLabel label_;
    std::unique_ptr<AwakeKeeper> keeper_;
};

void AwakeTest::initTestCase()
{
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("login manager"));
    QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/login1"), &manager_, QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.login1")));
}

void AwakeTest::init()
{
    manager_.asked.clear();
    manager_.refuses = false;
    for (int index = 0; index < 3; ++index)
        g::mcIcons.append(std::make_shared<viewMC>());
    keeper_ = std::make_unique<AwakeKeeper>(label_);
}

void AwakeTest::cleanup()
{
    keeper_.reset();
    g::mcIcons.clear();
}

void AwakeTest::awakeWhileAMachineWorks_data()
{
    QTest::addColumn<TransferActivity>("activity");
    QTest::addColumn<bool>("awake");
    QTest::addColumn<bool>("saves");
    QTest::newRow("waits for a start signal") << TransferActivity::Waiting << true << false;
    QTest::newRow("sends") << TransferActivity::Sending << true << false;
    QTest::newRow("held") << TransferActivity::Held << true << false;
    QTest::newRow("receives") << TransferActivity::Receiving << true << false;
    QTest::newRow("stopped") << TransferActivity::Stopped << false << false;
    QTest::newRow("nothing arrives") << TransferActivity::Listening << false << false;
    QTest::newRow("saves by itself what comes") << TransferActivity::Listening << true << true;
    QTest::newRow("has saved it") << TransferActivity::Received << true << true;
    QTest::newRow("saved by itself, and now is stopped") << TransferActivity::Stopped << false << true;
    QTest::newRow("port lost") << TransferActivity::PortLost << false << false;
}

void AwakeTest::awakeWhileAMachineWorks()
{
    QFETCH(TransferActivity, activity);
    QFETCH(bool, awake);
    QFETCH(bool, saves);
    machine(1).toFiles.isOn = saves;
    machine(1).showActivity(activity);
    QCOMPARE(keeper_->isAwakeWanted(), awake);
    if (!awake) return;
    QTRY_VERIFY(!label_.isHidden());
    QVERIFY(manager_.isHeld());
    QCOMPARE(manager_.asked, QStringList{QStringLiteral("sleep:idle:handle-lid-switch Varnock block")});
}

void AwakeTest::untilTheLastTransferHasEnded()
{
    machine(1).showActivity(TransferActivity::Sending);
    machine(2).showActivity(TransferActivity::Receiving);
    QTRY_VERIFY(!label_.isHidden());
    machine(1).showActivity(TransferActivity::Sent);
    QVERIFY(!label_.isHidden());
    QVERIFY(manager_.isHeld());
    machine(2).showActivity(TransferActivity::PortLost);
    QVERIFY(label_.isHidden());
    QTRY_VERIFY(!manager_.isHeld());
    QCOMPARE(manager_.asked.size(), 1);
}

void AwakeTest::nothingFailsWithoutPermission()
{
    manager_.refuses = true;
    machine(1).showActivity(TransferActivity::Sending);
    QTRY_COMPARE(manager_.asked.size(), 1);
    machine(1).showActivity(TransferActivity::Sent);
    manager_.refuses = false;
    machine(1).showActivity(TransferActivity::Sending);
    QTRY_VERIFY(!label_.isHidden());
    QCOMPARE(manager_.asked.size(), 2);
}

int main(int argc, char* argv[])
{
    const PrivateBus bus("DBUS_SYSTEM_BUS_ADDRESS");
    const QApplication application(argc, argv);
    AwakeTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "shell_awake.moc"
