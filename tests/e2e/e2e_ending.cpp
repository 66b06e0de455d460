// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "shell/frmChild.h"

#include <QProcess>
#include <QTimer>

#include <csignal>

namespace
{
QByteArray longProgram()
{
    return Shop::program(1500);
}

QByteArray onWire(const QByteArray& program)
{
    return QByteArray(program).replace("\n", "\r\n");
}
} // namespace

/// Run by the tests below in a process of its own, which they suspend.
class OperatorElsewhere : public QObject
{
    Q_OBJECT
public:
    explicit OperatorElsewhere(QString device) : device_(std::move(device)) {}
private Q_SLOTS:
    void sends()
    {
        const QTemporaryDir dir;
        Shop::storeMachines({Shop::machineOn(device_.toStdString()).get()});
        Operator op;
        op.openSend(1, Shop::writeFile(dir, "long.nc", longProgram()));
        op.click("btnSend");
        QTRY_VERIFY_WITH_TIMEOUT(op.isShown("btnSend"), 60000);
        QTRY_VERIFY(op.isShown("cbo1")); // rewound: it went out whole
    }

private:
    QString device_;
};

/// The program is suspended, or ended in every state.
class EndingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void suspendedProgramLosesAndDoublesNothing_data();
    void suspendedProgramLosesAndDoublesNothing();
    void closingTheMainWindowEndsTheProgram_data();
    void closingTheMainWindowEndsTheProgram();

private:
    void bringTo(Operator& op, const QString& state);
    QTemporaryDir dir_;
};

void EndingTest::suspendedProgramLosesAndDoublesNothing_data()
{
    QTest::addColumn<bool>("isHeld");
    QTest::addColumn<bool>("isReleasedAsleep");
    QTest::newRow("nobody holds the line") << false << false;
    QTest::newRow("held, released when awake") << true << false;
    QTest::newRow("held, released while it sleeps") << true << true;
}

void EndingTest::suspendedProgramLosesAndDoublesNothing()
{
    QFETCH(bool, isHeld);
    QFETCH(bool, isReleasedAsleep);
    PtyPair line;
    QProcess program;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_CONFIG_HOME", dir_.path()); // settings of its own
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QCoreApplication::applicationFilePath(), {"--operator", line.devicePath()});
    QVERIFY(program.waitForStarted());
    QByteArray received = line.readAtLeast(2000, 20000);
    if (isHeld) line.write("\x13");
    if (isHeld) received += line.readAtLeast(1'000'000, 300); // what was under way
    QCOMPARE(::kill(static_cast<pid_t>(program.processId()), SIGSTOP), 0);
    received += line.readAtLeast(1'000'000, 1000);
    if (isReleasedAsleep) line.write("\x11");
    received += line.readAtLeast(1'000'000, 1500);
    QVERIFY(received.size() < onWire(longProgram()).size()); // it was in the middle
    QCOMPARE(::kill(static_cast<pid_t>(program.processId()), SIGCONT), 0);
    if (isHeld && !isReleasedAsleep) line.write("\x11");
    received += line.readAtLeast(onWire(longProgram()).size() - received.size(), 30000);
    received += line.readAtLeast(1, 300); // nothing after it
    QCOMPARE(received, onWire(longProgram()));
    QTRY_COMPARE_WITH_TIMEOUT(program.state(), QProcess::NotRunning, 20000);
    QVERIFY2(program.exitCode() == 0, program.readAllStandardOutput().constData());
}

void EndingTest::closingTheMainWindowEndsTheProgram_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<bool>("asks");
    QTest::newRow("nothing chosen") << "none" << false;
    QTest::newRow("port that does not open") << "failed" << false;
    QTest::newRow("setup") << "setup" << false;
    QTest::newRow("ready to send") << "ready" << false;
    QTest::newRow("file dialog up") << "dialog" << false;
    QTest::newRow("message up") << "message" << false;
    QTest::newRow("receive") << "receive" << false;
    QTest::newRow("receive XModem") << "receive xmodem" << false;
    QTest::newRow("wait for the start signal") << "wait" << true;
    QTest::newRow("send, docked") << "send" << true;
    QTest::newRow("send, undocked") << "undocked" << true;
    QTest::newRow("wait for XModem's start") << "xmodem" << true;
    QTest::newRow("port lost in mid-send") << "lost" << false;
}

void EndingTest::bringTo(Operator& op, const QString& state)
{
    if (state == "none") return;
    if (state == "setup") return op.choose(1, "btnSetup");
    if (state.startsWith("receive")) return op.choose(1, "btnRX");
    if (state == "failed" || state == "dialog") return op.choose(1, "btnTX");
    op.openSend(1, state == "message" ? QString() : Shop::writeFile(dir_, "end.nc", Shop::program(20000)));
    if (state != "ready" && state != "message") op.click("btnSend");
    if (state == "undocked") op.click("btnUnDock");
}

void EndingTest::closingTheMainWindowEndsTheProgram()
{
    QFETCH(QString, state);
    QFETCH(bool, asks);
    PtyPair line; // nobody reads: what is under way stays so
    auto machine = Shop::machineOn(state == "failed" ? "1" : line.devicePath().toStdString());
    machine->MCNAME = "Lathe";
    machine->MCWAIT = state == "wait";
    if (state.contains("xmodem")) machine->MCFLOW = 3;
    const MachineRecord second;
    Shop::storeMachines({machine.get(), &second});
    Operator op;
    g::saveAllMcSettings();
    const auto before = Preferences::string("Varnock");
    bringTo(op, state);
    if (state == "lost") line.hangUp();
    if (state == "lost") QTRY_VERIFY(op.isShown("btnSend"));
    if (asks) {
        op.answerNextMessage("Cancel");
        QVERIFY(!op.window().close());
        QVERIFY(op.lastMessage.startsWith("Lathe is transferring a program"));
        QVERIFY(op.isShown("btnStop"));
    }

    QTimer::singleShot(20000, &op.app(), [] { QCoreApplication::exit(7); });
    op.lastMessage.clear();
    if (asks) op.answerNextMessage("Stop");
    if (state == "message") QTimer::singleShot(0, &op.window(), [&op] { op.click("btnSend"); });
    QTimer close; // the message must be up first
    connect(&close, &QTimer::timeout, &op.window(), [&] {
        if (state == "message" && !QApplication::activeModalWidget()) return;
        close.stop();
        op.window().close();
    });
    close.start(1);
    QCOMPARE(QApplication::exec(), 0);
    QCOMPARE(!op.lastMessage.isEmpty(), asks);
    QVERIFY(!op.window().isVisible());
    QCOMPARE(Preferences::string("Varnock"), before);
    op.restart();
    QCOMPARE(g::mcIcons.size(), 3);
    QCOMPARE(g::mcIcons[1]->MCNAME, "Lathe");
    if (state == "lost" || state == "failed") return;
    op.choose(1, "btnSetup"); // the port is free again
    QTRY_VERIFY(op.isShown("cboPorts"));
}

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "--operator") {
        OperatorElsewhere elsewhere(arguments.value(2));
        return QTest::qExec(&elsewhere, {arguments.first()});
    }
    EndingTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "e2e_ending.moc"
