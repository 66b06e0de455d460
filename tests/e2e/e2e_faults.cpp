// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "shell/viewMC.h"
#include "transfer/ProgramEditor.h"

#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QRandomGenerator>

#include <atomic>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{
QByteArray onWire(const QByteArray& program)
{
    return QByteArray(program).replace("\n", "\r\n");
}

// A control gone mad: writes as fast as the line takes it. A pseudo-terminal has no breaks; NULs are what they read as.
class Flood
{
public:
    Flood(const PtyPair& line, const QByteArray& bytes)
        : writer_([this, master = line.master(), bytes](const std::stop_token& stop) {
              while (!stop.stop_requested()) {
                  const auto count = ::write(master, bytes.constData(), static_cast<std::size_t>(bytes.size()));
                  count > 0 ? void(written += count) : std::this_thread::yield();
              }
          })
    {
    }

    std::atomic<qint64> written = 0;

private:
    std::jthread writer_;
};
} // namespace

/// What goes wrong around the program: adapters, devices, controls. The operator must always be able to go on.
class FaultsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void adapterIsPulledOutAndPluggedInAgain_data();
    void adapterIsPulledOutAndPluggedInAgain();
    void portThatCannotBeUsedIsExplained_data();
    void portThatCannotBeUsedIsExplained();
    void deadControlHoldsNobodyUp_data();
    void deadControlHoldsNobodyUp();
    void floodDuringASendChangesNothing_data();
    void floodDuringASendChangesNothing();
    void floodWhileReceivingHoldsNobodyUp_data();
    void floodWhileReceivingHoldsNobodyUp();

private:
    void plugIn(const PtyPair& adapter) const;
    void sendsRight(Operator& op, PtyPair& line);
    QString link() const { return dir_.filePath("adapter"); }
    static QString stateOf(int machine) { return mcIconAt(machine)->findChild<QLabel*>("lblState")->text(); }
    static void addFloods();

    QTemporaryDir dir_;
};

void FaultsTest::plugIn(const PtyPair& adapter) const
{
    QFile::remove(link());
    QVERIFY(QFile::link(adapter.devicePath(), link()));
}

void FaultsTest::sendsRight(Operator& op, PtyPair& line)
{
    line.read();
    const QByteArray program = "(NEXT)\n" + Shop::program(50);
    op.openSend(1, Shop::writeFile(dir_, "next.nc", program));
    op.click("btnSend");
    QCOMPARE(line.readAtLeast(onWire(program).size(), 20000), onWire(program));
    QTRY_VERIFY_WITH_TIMEOUT(op.isShown("btnSend"), 20000);
}

void FaultsTest::adapterIsPulledOutAndPluggedInAgain_data()
{
    QTest::addColumn<QString>("state");
    for (const char* state : {"idle", "send", "wait", "receive", "setup", "failed"})
        QTest::newRow(state) << QString::fromLatin1(state);
}

void FaultsTest::adapterIsPulledOutAndPluggedInAgain()
{
    QFETCH(QString, state);
    PtyPair first;
    plugIn(first);
    PtyPair other; // another machine is at work, held
    auto machine = Shop::machineOn(link().toStdString());
    machine->MCWAIT = state == "wait";
    const auto neighbour = Shop::machineOn(other.devicePath().toStdString());
    Shop::storeMachines({machine.get(), neighbour.get()});
    Operator op;
    const QByteArray program = Shop::program(3000);
    op.openSend(2, Shop::writeFile(dir_, "other.nc", program));
    op.click("btnSend");

    if (state == "receive" || state == "setup") op.choose(1, state == "setup" ? "btnSetup" : "btnRX");
    if (state == "idle" || state == "send" || state == "wait")
        op.openSend(1, Shop::writeFile(dir_, "first.nc", Shop::program(3000)));
    if (state == "send" || state == "wait") op.click("btnSend");
    if (state == "send") first.readAtLeast(500);
    first.hangUp();
    if (state != "setup" && state != "failed") QTRY_COMPARE(stateOf(1), "Port lost");
    QFile::remove(link());
    if (state == "failed") { // chosen while it is out
        op.choose(1, "btnTX");
        QVERIFY(op.isShown("boxStartupError"));
    }
    PtyPair second;
    plugIn(second);
    if (state == "setup") op.click("btnSave");
    QTest::qWait(200); // a program sent behind the operator's back would come now
    QCOMPARE(second.read(), QByteArray());
    if (state == "wait") { // the start signal it waited for comes too late
        second.write("\x11");
        QTest::qWait(200);
        QCOMPARE(second.read(), QByteArray());
        g::mcIcons[1]->MCWAIT = false;
    }
    sendsRight(op, second);
    QCOMPARE(other.readAtLeast(onWire(program).size()), onWire(program));
    const QString before = g::mcIcons[1]->MCPORT;
    op.restart();
    QCOMPARE(g::mcIcons[1]->MCPORT, before);
}

void FaultsTest::portThatCannotBeUsedIsExplained_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("cause");
    const QString notSerial = "This is not a serial port.";
    QTest::newRow("held by another program") << "busy"
                                             << "The port is in use by another program";
    QTest::newRow("missing") << "missing"
                             << "There is no such port now.";
    QTest::newRow("below a file") << "below"
                                  << "There is no such port now.";
    QTest::newRow("directory") << "directory" << notSerial;
    QTest::newRow("file") << "file" << notSerial;
    QTest::newRow("pipe") << "pipe" << notSerial;
    QTest::newRow("null device") << "null" << notSerial;
}

void FaultsTest::portThatCannotBeUsedIsExplained()
{
    QFETCH(QString, kind);
    QFETCH(QString, cause);
    PtyPair line;
    QString path = dir_.filePath(kind);
    QProcess holder;
    if (kind == "busy") {
        path = line.devicePath();
        holder.start("sh", {"-c", "exec 9<>\"$0\"; flock 9; echo held; exec sleep 100", path});
        QVERIFY(holder.waitForReadyRead());
    }
    if (kind == "below") path = Shop::writeFile(dir_, "plain", "x") + "/port";
    if (kind == "directory") path = dir_.path();
    if (kind == "file") Shop::writeFile(dir_, kind, "kept");
    if (kind == "pipe") QCOMPARE(::mkfifo(qPrintable(path), 0600), 0);
    if (kind == "null") path = "/dev/null";
    Shop::storeMachines({Shop::machineOn(path.toStdString()).get()});
    Operator op;
    for (const char* choice : {"btnTX", "btnRX", "btnSetup"}) {
        op.choose(1, choice);
        QVERIFY(op.isShown("boxStartupError"));
        const QString told = op.find<QLabel>("lblLikelyCause")->text();
        QVERIFY2(told.startsWith(cause), qPrintable(told));
        QVERIFY(!op.isShown("btnSend"));
    }
    op.setUp(1, kind == "busy" ? path : line.devicePath(), "Auto", 1, 0);
    if (kind == "busy") {
        holder.kill();
        QVERIFY(holder.waitForFinished());
    }
    sendsRight(op, line);
    QFile file(path);
    if (kind == "file") QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == "kept");
}

void FaultsTest::deadControlHoldsNobodyUp_data()
{
    QTest::addColumn<bool>("sendsXoff");
    QTest::newRow("reads nothing until all buffers are full") << false;
    QTest::newRow("XOFF for ever") << true;
}

void FaultsTest::deadControlHoldsNobodyUp()
{
    QFETCH(bool, sendsXoff);
    PtyPair dead;
    cncsim::Settings settings;
    settings.silenceMs = 300;
    settings.xonXoff = true;
    settings.readRate = 40000;
    cncsim::SimulatedControl other(settings);
    const auto machine = Shop::machineOn(dead.devicePath().toStdString());
    const auto neighbour = Shop::machineOn(other.devicePath());
    Shop::storeMachines({machine.get(), neighbour.get()});
    Operator op;
    const QByteArray program = Shop::program(3000);
    op.openSend(1, Shop::writeFile(dir_, "dead.nc", program));
    op.click("btnSend");
    if (sendsXoff) dead.write("\x13");
    QTRY_VERIFY_WITH_TIMEOUT(stateOf(1).startsWith("Held"), 20000);
    op.openSend(2, Shop::writeFile(dir_, "alive.nc", "(ALIVE)\n" + program));
    op.click("btnSend");
    QTRY_VERIFY(other.receivedBytes() > 0);
    op.clickIn(mcIconAt(1), "btnMC");
    QTRY_VERIFY(op.isShown("btnCloseMenu"));
    op.click("btnCloseMenu");
    op.clickIn(op.child(1), "btnStop");
    QVERIFY(op.findIn<QWidget>(op.child(1), "btnSend"));
    op.clickIn(op.child(1), "btnClose");
    QVERIFY(!other.isComplete()); // both clicks were answered while the other was at work
    QTRY_VERIFY_WITH_TIMEOUT(other.isComplete(), 30000);
    QCOMPARE(Shop::bytesOf(other.report().program), onWire("(ALIVE)\n" + program));

    dead.write("\x11"); // repaired
    QTest::qWait(100);
    sendsRight(op, dead);
}

void FaultsTest::addFloods()
{
    QRandomGenerator chance(7);
    QByteArray garbage(4096, '\0');
    for (char& byte : garbage)
        byte = static_cast<char>(chance.bounded(256));
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("any bytes") << garbage;
    QTest::newRow("start signals") << QByteArray(4096, '\x11');
    QTest::newRow("NULs, as of breaks") << QByteArray(4096, '\0');
}

void FaultsTest::floodDuringASendChangesNothing_data()
{
    addFloods();
}

void FaultsTest::floodDuringASendChangesNothing()
{
    QFETCH(QByteArray, bytes);
    PtyPair mad;
    const auto machine = Shop::machineOn(mad.devicePath().toStdString());
    machine->MCFLOW = 0;
    Shop::storeMachines({machine.get()});
    Operator op;
    const QByteArray program = Shop::program(1000);
    op.openSend(1, Shop::writeFile(dir_, "mad.nc", program));
    op.click("btnSend");
    {
        const Flood flood(mad, bytes);
        QCOMPARE(mad.readAtLeast(onWire(program).size(), 20000), onWire(program));
        QTRY_VERIFY(op.isShown("btnSend"));
        QTRY_VERIFY(flood.written > 100'000);
    }
    sendsRight(op, mad);
}

void FaultsTest::floodWhileReceivingHoldsNobodyUp_data()
{
    addFloods();
}

void FaultsTest::floodWhileReceivingHoldsNobodyUp()
{
    QFETCH(QByteArray, bytes);
    PtyPair mad;
    cncsim::Settings settings;
    settings.silenceMs = 300;
    settings.xonXoff = true;
    cncsim::SimulatedControl other(settings);
    const auto machine = Shop::machineOn(mad.devicePath().toStdString());
    machine->MCFLOW = 0;
    const auto neighbour = Shop::machineOn(other.devicePath());
    Shop::storeMachines({machine.get(), neighbour.get()});
    Operator op;
    op.choose(1, "btnRX");
    const auto flood = std::make_unique<Flood>(mad, bytes);
    auto* editor = op.findIn<ProgramEditor>(op.child(1), "rt1");
    QTRY_VERIFY_WITH_TIMEOUT(editor->textSize() > 200'000, 30000);
    op.openSend(2, Shop::writeFile(dir_, "calm.nc", Shop::program(800)));
    op.click("btnSend");
    QTRY_VERIFY_WITH_TIMEOUT(other.isComplete(), 20000);
    QCOMPARE(Shop::bytesOf(other.report().program), onWire(Shop::program(800)));
    op.clickIn(mcIconAt(1), "btnMC");
    QTRY_VERIFY(op.isShown("btnCloseMenu"));
    op.click("btnCloseMenu");
    op.clickIn(op.child(1), "btnLock");
    QVERIFY(editor->isReadOnly());
    op.clickIn(op.child(1), "btnClose");
    QTRY_COMPARE(stateOf(1), "Idle");
    sendsRight(op, mad); // while it still floods
}

QTEST_MAIN(FaultsTest)
#include "e2e_faults.moc"
