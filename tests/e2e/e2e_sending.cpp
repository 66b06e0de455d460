// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "simulator/SimulatedControl.h"
#include "support/PtyPair.h"

#include <QRandomGenerator>

class SendingTest : public QObject
{
    Q_OBJECT
    const QByteArray leader_ = QByteArray(20, '\0');

private Q_SLOTS:
    void controlGetsExactlyTheProgram_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("wire");
        const QByteArray body = Shop::program(1000), onWire = Shop::onWire(body);
        QTest::newRow("Fanuc, even parity: its XOFF is 0x93") << "Fanuc"
                                                              << "%\nO1234 (TEST)\n" + body + "%\n"
                                                              << leader_ + "%\r\nO1234 (TEST)\r\n" + onWire + "%\r\n";
        QTest::newRow("Okuma") << "Okuma"
                               << "$A.MIN%\n" + body
                               << leader_ + '\x12' + '\0' + leader_ + "$A.MIN%\r\n" + onWire + leader_ + '\x14' +
                                      QByteArray(5, '\0');
        QTest::newRow("start signal") << "Auto" << onWire + "M30" << onWire + "M30";
        QByteArray all, allOnWire;
        for (int code = 0; code < 256; ++code) {
            all += static_cast<char>(code);
            allOnWire +=
                code == '\r' || code == '\n' ? QByteArray("\r\n") : QByteArray(1, code > 127 ? '?' : char(code));
        }
        QTest::newRow("any byte") << "Haas" << all << allOnWire;
    }

    void controlGetsExactlyTheProgram()
    {
        QFETCH(QString, mode);
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, wire);
        const QString tag = QTest::currentDataTag();
        const bool isEven = tag.contains("even parity"), waits = tag == "start signal", holds = tag != "any byte";
        cncsim::Settings settings;
        settings.evenParity = isEven;
        settings.xonXoff = holds;
        settings.readRate = 2000; // bytes a second; slow enough to hold the line now and then
        settings.start = waits ? cncsim::StartSignal::OnRequest : cncsim::StartSignal::None;
        cncsim::SimulatedControl control(settings);
        const auto machine = Shop::machineOn(QString::fromStdString(control.devicePath()), mode);
        machine->MCFLOW = holds ? 1 : 0;
        machine->MCDBPAR = isEven ? 2 : 0;
        machine->MCWAIT = waits;
        Shop::store({machine});
        Operator op;
        op.send(1, file);
        if (waits) {
            QTest::qWait(200); // nothing may come before the signal
            QCOMPARE(control.receivedBytes(), std::size_t{0});
            control.pressStart();
        }
        QTRY_VERIFY_WITH_TIMEOUT(op.isShown("btnSend"), 30000);
        QTRY_VERIFY(control.receivedBytes() >= static_cast<std::size_t>(wire.size()));
        const auto report = control.report();
        QCOMPARE(QByteArray::fromStdString(report.received), wire);
        QVERIFY(report.parityErrors == 0 && report.lostBytes == 0 && (report.xoffCount > 0) == holds);
    }

    // The control reads only now and then, so that the device's buffer fills and stops hit half-taken lines, header and
    // trailer. Clicks and keys during a send must change nothing.
    void stopAndContinueNeitherLosesNorDoublesBytes()
    {
        QRandomGenerator chance(1);
        PtyPair line;
        const auto machine = Shop::machineOn(line.devicePath(), "Fanuc");
        machine->MCFLOW = 0;
        Shop::store({machine});
        Operator op;
        const QByteArray program = Shop::program(400) + QByteArray(6000, 'X') + "\nM30";
        op.open(1, program);
        op.click("btnLock"); // unlocked, so that keys could edit
        auto* editor = op.find("rt1");
        const QByteArray expected = leader_ + "%\r\n" + Shop::onWire(program) + "%\r\n";
        for (int send = 1; send <= 8; ++send) {
            op.click("btnSend");
            QByteArray received;
            for (int round = 0; received.size() < expected.size() && round < 3000; ++round) {
                QTest::qWait(static_cast<int>(chance.bounded(4)));
                if (chance.bounded(3) == 0) received += line.read();
                if (op.isShown("btnStop") && chance.bounded(10) == 0) {
                    QTest::mouseClick(editor, Qt::LeftButton, {}, QPoint(80, static_cast<int>(chance.bounded(200))));
                    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
                    QTest::keyClick(editor, chance.bounded(2) == 0 ? Qt::Key_Q : Qt::Key_Delete);
                }
                if (!op.isShown("btnStop") || chance.bounded(4) > 0) continue;
                op.click("btnStop");
                if (chance.bounded(2) == 0) received += line.read();
                QTest::qWait(static_cast<int>(chance.bounded(15)));
                op.click("btnSend");
            }
            QCOMPARE(received + line.read(), expected);
            QTRY_VERIFY(op.isShown("btnSend"));
        }
    }
};

QTEST_MAIN(SendingTest)
#include "e2e_sending.moc"
