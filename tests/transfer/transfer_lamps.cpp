// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/LineLamps.h"
#include "transfer/TransferRig.h"

#include <QSignalSpy>

/// The lamps of the lines. A pseudo-terminal has none, so what a port would read is told to the view here.
class LampsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lampsShowWhatWasRead_data()
    {
        QTest::addColumn<QByteArray>("lamp");
        QTest::addColumn<ModemLines>("lines"); // only this one on
        QTest::newRow("DTR") << QByteArray("lampDTR") << ModemLines{.dtr = true};
        QTest::newRow("RTS") << QByteArray("lampRTS") << ModemLines{.rts = true};
        QTest::newRow("CTS") << QByteArray("lampCTS") << ModemLines{.cts = true};
        QTest::newRow("DSR") << QByteArray("lampDSR") << ModemLines{.dsr = true};
        QTest::newRow("DCD") << QByteArray("lampDCD") << ModemLines{.dcd = true};
    }

    void lampsShowWhatWasRead()
    {
        QFETCH(QByteArray, lamp);
        QFETCH(ModemLines, lines);
        TransferRig rig;
        QSignalSpy answers(&rig.port, &serialPort::modemLinesRead);
        rig.start();
        QTRY_COMPARE(answers.size(), 1);
        QVERIFY(!rig.isShown("lampCTS")); // the device has no such lines
        rig.view->resize(1200, 600);
        Q_EMIT rig.port.modemLinesRead(lines);
        for (const auto& line : modemLines) {
            const QByteArray name = QByteArray("lamp") + line.name;
            QTRY_VERIFY(rig.isShown(name.constData()));
            const auto* label = rig.find<QLabel>(name.constData());
            const bool isOn = name == lamp;
            QCOMPARE(label->text(), (isOn ? QString(QChar(0x25CF)) : QString(QChar(0x25CB))) + ' ' + line.name);
            QCOMPARE(label->accessibleName(), QString(line.name) + (isOn ? " on" : " off"));
            QVERIFY(label->toolTip().startsWith(QString(line.name) + ": " + line.meaning));
        }
        rig.view->resize(500, 600);
        QTRY_VERIFY(!rig.isShown("lampCTS"));
        rig.view->resize(1200, 600);
        QTRY_VERIFY(rig.isShown("lampCTS"));
        rig.pty.hangUp();
        QTRY_VERIFY(!rig.isShown("lampCTS"));
    }
};

QTEST_MAIN(LampsTest)
#include "transfer_lamps.moc"
