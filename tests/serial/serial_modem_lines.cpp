// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/OpenPort.h"

#include <QSignalSpy>
#include <QTest>

#include <sys/ioctl.h>
#include <termios.h>

class ModemLinesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void eachBitIsOneLine_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<ModemLines>("lines");
        QTest::newRow("none") << 0 << ModemLines{};
        QTest::newRow("DTR") << TIOCM_DTR << ModemLines{.dtr = true};
        QTest::newRow("RTS") << TIOCM_RTS << ModemLines{.rts = true};
        QTest::newRow("CTS") << TIOCM_CTS << ModemLines{.cts = true};
        QTest::newRow("DSR") << TIOCM_DSR << ModemLines{.dsr = true};
        QTest::newRow("DCD") << TIOCM_CD << ModemLines{.dcd = true};
        QTest::newRow("ring, which no control uses") << TIOCM_RI << ModemLines{};
    }

    void eachBitIsOneLine()
    {
        QFETCH(int, bits);
        QTEST(ModemLines::of(bits), "lines");
    }

    void portWithoutLinesSaysSo()
    {
        OpenPort line;
        QSignalSpy answers(line.port.get(), &serialPort::modemLinesRead);
        const auto isNone = [&] { return !answers.takeFirst().first().value<std::optional<ModemLines>>(); };
        line.port->askModemLines();
        line.port->askModemLines(); // one question at a time
        QTRY_COMPARE(answers.size(), 1);
        QVERIFY(isNone());
        line.port->Close();
        line.port->askModemLines();
        QCOMPARE(answers.size(), 1);
        QVERIFY(isNone());
    }

    // What was read of a device must not be shown as the next one's.
    void answerOfAClosedDeviceIsDropped()
    {
        OpenPort line;
        PtyPair next;
        QSignalSpy answers(line.port.get(), &serialPort::modemLinesRead);
        line.port->askModemLines();
        line.port->Close();
        QVERIFY(line.port->Open(next.devicePath()) >= 0);
        QTRY_VERIFY((line.port->askModemLines(), answers.size() > 0)); // the first answer has been dropped
        QCOMPARE(answers.size(), 1);
    }
};

QTEST_GUILESS_MAIN(ModemLinesTest)
#include "serial_modem_lines.moc"
