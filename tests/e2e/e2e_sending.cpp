// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"

#include "shell/viewMC.h"

#include <QLineEdit>

using cncsim::ControlType;

class SendingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void controlGetsExactlyTheProgram_data();
    void controlGetsExactlyTheProgram();
    void anyByteOpensAndGoesOut();
    void emptyProgramIsRefused();
    void unreadableFileChangesNothing();
    void waitsForTheStartSignal();
    void sendNowEndsTheWait();
    void hidingTheWaitBoxKeepsTheWait();
    void repeatsUntilStopped();
    void holdsWhileTheControlIsFull();

private:
    QTemporaryDir dir_;
};

void SendingTest::controlGetsExactlyTheProgram_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("format"); // 2: 7 bits, even parity
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("program");
    const QByteArray body = Shop::program(60);
    QByteArray onWire = body;
    onWire.replace("\n", "\r\n");
    const auto type = [](ControlType t) { return static_cast<int>(t); };
    QTest::newRow("Fanuc, even parity, percent lines not doubled")
        << QStringLiteral("Fanuc") << type(ControlType::Fanuc) << 2 << QByteArray("%\nO1234 (TEST)\n" + body + "%\n")
        << QByteArray("O1234 (TEST)\r\n" + onWire);
    QTest::newRow("Okuma") << QStringLiteral("Okuma") << type(ControlType::Okuma) << 0 << QByteArray("$A.MIN%\n" + body)
                           << QByteArray("$A.MIN%\r\n" + onWire);
    QTest::newRow("plain, DOS line ends")
        << QStringLiteral("Auto") << type(ControlType::Plain) << 0 << onWire << onWire;
    QTest::newRow("plain, no line end at the end")
        << QStringLiteral("Haas") << type(ControlType::Plain) << 1 << QByteArray("G0\nM30") << QByteArray("G0\r\nM30");
}

void SendingTest::controlGetsExactlyTheProgram()
{
    QFETCH(QString, mode);
    QFETCH(int, type);
    QFETCH(int, format);
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, program);
    cncsim::Settings settings;
    settings.framing.type = static_cast<ControlType>(type);
    settings.evenParity = format == 2;
    settings.xonXoff = true;
    settings.silenceMs = 300;
    cncsim::SimulatedControl control(settings);
    auto machine = Shop::machineOn(control.devicePath(), mode);
    machine->MCDBPAR = format;
    Shop::storeMachines({machine.get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("program.nc"), file));
    op.click(QStringLiteral("btnSend"));
    QTRY_VERIFY_WITH_TIMEOUT(control.report().isComplete, 20000);
    const auto report = control.report();
    QCOMPARE(Shop::bytesOf(report.problem), QByteArray());
    QCOMPARE(Shop::bytesOf(report.program), program);
    QTRY_VERIFY(op.isShown(QStringLiteral("btnSend"))); // ready for the next
    QVERIFY(!op.isShown(QStringLiteral("btnStop")));
}

void SendingTest::anyByteOpensAndGoesOut()
{
    QByteArray file;
    for (int code = 0; code < 256; ++code)
        file.append(static_cast<char>(code));
    QByteArray expected = file;
    expected.replace('\r', '\n').replace("\n", "\r\n");
    for (char& byte : expected)
        if (static_cast<unsigned char>(byte) > 127) byte = '?';
    cncsim::Settings settings;
    settings.silenceMs = 300;
    cncsim::SimulatedControl control(settings);
    auto machine = Shop::machineOn(control.devicePath());
    machine->MCFLOW = 0;
    Shop::storeMachines({machine.get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("bytes.bin"), file));
    op.click(QStringLiteral("btnSend"));
    QTRY_VERIFY(control.report().isComplete);
    QCOMPARE(Shop::bytesOf(control.report().received), expected);
}

void SendingTest::emptyProgramIsRefused()
{
    cncsim::SimulatedControl control({});
    Shop::storeMachines({Shop::machineOn(control.devicePath()).get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("empty.nc"), {}));
    op.answerNextMessage(QStringLiteral("OK"));
    op.click(QStringLiteral("btnSend"));
    QCOMPARE(op.lastMessage,
             QStringLiteral("Can not send an empty file\n\nOpen folder and select a file to send to the CNC"));
    QVERIFY(op.isShown(QStringLiteral("btnSend")));
    QVERIFY(control.report().received.empty());
}

void SendingTest::unreadableFileChangesNothing()
{
    cncsim::SimulatedControl control({});
    Shop::storeMachines({Shop::machineOn(control.devicePath()).get()});
    Operator op;
    op.openSend(1, {}); // cancelled
    QCOMPARE(op.find<QLineEdit>(QStringLiteral("txtPath"))->text(), QString());
    QVERIFY(op.find<QWidget>(QStringLiteral("btnFolder"))->isEnabled());
}

void SendingTest::waitsForTheStartSignal()
{
    cncsim::Settings settings;
    settings.start = cncsim::StartSignal::OnRequest;
    settings.silenceMs = 300;
    cncsim::SimulatedControl control(settings);
    auto machine = Shop::machineOn(control.devicePath());
    machine->MCWAIT = true;
    Shop::storeMachines({machine.get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("wait.nc"), Shop::program(5)));
    op.click(QStringLiteral("btnSend"));
    QVERIFY(op.isShown(QStringLiteral("boxWaitForCNC")));
    QTest::qWait(300);
    QVERIFY(control.report().received.empty());
    control.pressStart();
    QTRY_VERIFY(control.report().isComplete);
    QVERIFY(!op.isShown(QStringLiteral("boxWaitForCNC")));
    QCOMPARE(Shop::bytesOf(control.report().program), Shop::program(5).replace("\n", "\r\n"));
}

void SendingTest::sendNowEndsTheWait()
{
    cncsim::Settings settings;
    settings.silenceMs = 300;
    cncsim::SimulatedControl control(settings);
    auto machine = Shop::machineOn(control.devicePath());
    machine->MCWAIT = true;
    Shop::storeMachines({machine.get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("now.nc"), Shop::program(5)));
    op.click(QStringLiteral("btnSend"));
    op.click(QStringLiteral("btnSendNow"));
    QTRY_VERIFY(control.report().isComplete);
    QCOMPARE(Shop::bytesOf(control.report().program), Shop::program(5).replace("\n", "\r\n"));
}

void SendingTest::hidingTheWaitBoxKeepsTheWait()
{
    cncsim::Settings settings;
    settings.silenceMs = 300;
    cncsim::SimulatedControl control(settings);
    auto machine = Shop::machineOn(control.devicePath());
    machine->MCWAIT = true;
    Shop::storeMachines({machine.get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("hide.nc"), Shop::program(3)));
    op.click(QStringLiteral("btnSend"));
    op.click(QStringLiteral("btnHideWaitBox"));
    QVERIFY(!op.isShown(QStringLiteral("boxWaitForCNC")));
    QVERIFY(op.isShown(QStringLiteral("btnStop")));
    control.pressStart();
    QTRY_VERIFY(control.report().isComplete);
}

void SendingTest::repeatsUntilStopped()
{
    cncsim::Settings settings;
    cncsim::SimulatedControl control(settings);
    auto machine = Shop::machineOn(control.devicePath());
    machine->MCREPEAT = true;
    machine->MCTXEOT = QStringLiteral("3");
    Shop::storeMachines({machine.get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("repeat.nc"), Shop::program(4)));
    op.click(QStringLiteral("btnSend"));
    const QByteArray once = Shop::program(4).replace("\n", "\r\n") + '\x03';
    QTRY_VERIFY_WITH_TIMEOUT(control.report().received.size() >= static_cast<std::size_t>(3 * once.size()), 10000);
    op.click(QStringLiteral("btnStop"));
    const QByteArray received = Shop::bytesOf(control.report().received);
    QCOMPARE(received, once.repeated(static_cast<int>(received.size() / once.size() + 1)).left(received.size()));
}

void SendingTest::holdsWhileTheControlIsFull()
{
    cncsim::Settings settings;
    settings.framing.type = ControlType::Fanuc;
    settings.evenParity = true; // its XOFF is 0x93
    settings.xonXoff = true;
    settings.readRate = 20000;
    cncsim::SimulatedControl control(settings);
    auto machine = Shop::machineOn(control.devicePath(), QStringLiteral("Fanuc"));
    machine->MCDBPAR = 2;
    Shop::storeMachines({machine.get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("long.nc"), Shop::program(2500)));
    op.click(QStringLiteral("btnSend"));
    QTRY_VERIFY_WITH_TIMEOUT(control.report().isComplete, 30000);
    const auto report = control.report();
    QVERIFY(report.xoffCount > 0);
    QCOMPARE(Shop::bytesOf(report.problem), QByteArray());
    QCOMPARE(Shop::bytesOf(report.program), Shop::program(2500).replace("\n", "\r\n"));
}

QTEST_MAIN(SendingTest)
#include "e2e_sending.moc"
