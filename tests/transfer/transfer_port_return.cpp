// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Computer.h"
#include "support/MessageBoxes.h"
#include "transfer/PortReturn.h"
#include "transfer/TransferRig.h"

namespace
{
const QByteArray program("G0\nG1\nG2\nG3\n");

Plugged adapter(const QString& name, const QString& serial, const PtyPair& line)
{
    return {name, "FTDI", serial, "usb-FTDI_" + serial, {}, line.devicePath()};
}
} // namespace

/// The adapter that was pulled out is back: the operator goes on with one click, and never on another machine's line.
class PortReturnTest : public QObject
{
    Q_OBJECT
    // A machine on ttyUSB0, adapter A1.
    struct Shop {
        Computer computer;
        TransferRig rig;
        PortReturn* bar = nullptr;

        void start(bool sends, const QByteArray& text = program)
        {
            plug({adapter("ttyUSB0", "A1", rig.pty)});
            rig.machine->MCPORT = computer.file("dev/ttyUSB0");
            rig.start(sends);
            rig.open(text);
            bar = rig.find<PortReturn>("portReturn");
            bar->setSources(computer.sources());
            bar->opened(rig.machine->MCPORT);
        }
        void plug(const Plugs& plugs) { computer.plug(plugs); }
        // Cut in G2 if `writes` is 3.
        void loseAfter(int writes)
        {
            if (writes > 0) rig.sendUntilHeld(writes);
            rig.pty.hangUp();
            plug({});
            QTRY_COMPARE(rig.headline(), QString("Port lost"));
            QVERIFY(!bar->isVisible());
        }
        QString button() const { return rig.find<QAbstractButton>("btnPortReturn")->text().remove('&'); }
    };

private Q_SLOTS:
    void oneClickGoesOn_data()
    {
        QTest::addColumn<bool>("sends");
        QTest::addColumn<int>("flow");
        QTest::addColumn<int>("writes");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("says"); // among others
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray rest("G2\r\nG3\r\n");
        QTest::newRow("in a line") << true << 0 << 3 << "ttyUSB0"
                                   << "Continue"
                                   << "the whole of line 3; the caret chooses another:\nG2" << rest;
        QTest::newRow("in a line, back with another number") << true << 0 << 3 << "ttyUSB1"
                                                             << "Continue"
                                                             << "is back, now as" << rest;
        QTest::newRow("in the header") << true << 0 << 0 << "ttyUSB0"
                                       << "Open the port"
                                       << "is back." << QByteArray();
        QTest::newRow("XModem") << true << 3 << 0 << "ttyUSB0"
                                << "Open the port"
                                << "is back." << QByteArray();
        QTest::newRow("receiving") << false << 0 << 0 << "ttyUSB0"
                                   << "Listen again"
                                   << "meanwhile is missing" << QByteArray();
        QTest::newRow("receiving, back with another number") << false << 0 << 0 << "ttyUSB1"
                                                             << "Listen again"
                                                             << "is back, now as" << QByteArray();
    }

    void oneClickGoesOn()
    {
        QFETCH(bool, sends);
        QFETCH(int, flow);
        QFETCH(int, writes);
        QFETCH(QString, name);
        QFETCH(QString, says);
        QFETCH(QByteArray, bytes);
        Shop shop;
        shop.rig.machine->MCFLOW = flow;
        shop.start(sends);
        shop.loseAfter(writes);
        PtyPair again, other;
        shop.plug({adapter("ttyUSB7", "B7", other), adapter(name, "A1", again)});
        QTRY_VERIFY(shop.bar->isVisible());
        QTEST(shop.button(), "button");
        QVERIFY2(shop.bar->text().contains(says), qPrintable(shop.bar->text()));
        QVERIFY(again.read().isEmpty() && !shop.rig.port.isOpen()); // nothing is done behind the operator's back
        shop.rig.click("btnPortReturn");
        QVERIFY(shop.rig.port.isOpen() && !shop.bar->isVisible());
        QCOMPARE(again.readAtLeast(bytes.size()), bytes);
        if (!sends) {
            again.write("N1\n");
            QTRY_VERIFY(shop.rig.editor->wholeText().endsWith("N1\n"));
        }
        const bool isMoved = name != "ttyUSB0"; // for this session only
        QCOMPARE(shop.rig.machine->portNow, isMoved ? shop.computer.file("by-id/usb-FTDI_A1") : QString());
        QCOMPARE(shop.rig.machine->MCPORT, shop.computer.file("dev/ttyUSB0"));
        QCOMPARE(shop.rig.text("lblMcParas").contains("usb-FTDI_A1"), isMoved);
        QVERIFY(other.read().isEmpty());
    }

    void newPathIsStoredOnRequest()
    {
        Shop shop;
        shop.start(true);
        shop.loseAfter(0);
        PtyPair again;
        shop.plug({adapter("ttyUSB1", "A1", again)});
        QTRY_VERIFY(shop.bar->isVisible());
        shop.rig.find<QAbstractButton>("chkKeepPath")->click();
        shop.rig.click("btnPortReturn");
        QCOMPARE(shop.rig.machine->MCPORT, shop.computer.file("by-id/usb-FTDI_A1"));
        QCOMPARE(shop.rig.machine->portNow, QString());
    }

    void caretChoosesTheLine()
    {
        Shop shop;
        shop.start(true);
        shop.loseAfter(3);
        PtyPair again;
        shop.plug({adapter("ttyUSB0", "A1", again)});
        QTRY_VERIFY(shop.bar->isVisible());
        shop.rig.editor->setFocus();
        QTest::keyClick(shop.rig.editor, Qt::Key_Up);
        QVERIFY2(shop.bar->text().contains("of line 2;") && shop.bar->text().endsWith("\nG1"),
                 qPrintable(shop.bar->text()));
        shop.rig.click("btnPortReturn");
        QCOMPARE(again.readAtLeast(12), QByteArray("G1\r\nG2\r\nG3\r\n"));
    }

    // ttyUSB0 is now another machine's line.
    void otherAdapterGetsNothing()
    {
        Shop shop;
        shop.start(true);
        shop.loseAfter(3);
        PtyPair other;
        shop.plug({adapter("ttyUSB0", "B7", other)});
        QTRY_VERIFY(shop.bar->isVisible());
        QVERIFY2(shop.bar->text().contains("Another adapter is at"), qPrintable(shop.bar->text()));
        QVERIFY(shop.bar->text().contains("no. B7"));
        MessageBoxes boxes("OK");
        shop.rig.click("btnSend");
        QVERIFY(boxes.texts.size() == 1 && !shop.rig.port.isOpen());

        QCOMPARE(shop.button(), QString("Use this adapter")); // it takes the place of a broken one
        shop.rig.click("btnPortReturn");
        QVERIFY(other.read().isEmpty() && !shop.rig.port.isOpen());
        QCOMPARE(shop.button(), QString("Continue"));
        shop.rig.click("btnPortReturn");
        QCOMPARE(other.readAtLeast(8), QByteArray("G2\r\nG3\r\n"));
    }

    void adapterThatGoesAgainIsNotOffered()
    {
        Shop shop;
        shop.start(true);
        shop.loseAfter(0);
        PtyPair again;
        shop.plug({adapter("ttyUSB0", "A1", again)});
        QTRY_VERIFY(shop.bar->isVisible());
        again.hangUp();
        shop.plug({});
        QTRY_VERIFY(!shop.bar->isVisible());
    }
};

QTEST_MAIN(PortReturnTest)
#include "transfer_port_return.moc"
