// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/LrzszRig.h"

/// What a real XModem peer takes from us and we from it, byte for byte.
class LrzszTest : public QObject
{
    Q_OBJECT

    static QByteArray lines(int bytes)
    {
        return QByteArray("G1 X1.5 (A\tB) Y-2.25\n").repeated(bytes / 20 + 1).left(bytes);
    }
    static QByteArray padded(const QByteArray& data, char padding)
    {
        return data.leftJustified((data.size() + 127) / 128 * 128, padding);
    }
    static void addPrograms(const QList<int>& sizes, const char* lineEnd);

private Q_SLOTS:
    void rxTakesWhatTheViewSends_data();
    void rxTakesWhatTheViewSends();
    void rxRefusesTheNumberOfBlock256();
    void viewTakesWhatSxSends_data();
    void viewTakesWhatSxSends();
    void highBytesArriveWithoutBit7();
};

void LrzszTest::addPrograms(const QList<int>& sizes, const char* lineEnd)
{
    QTest::addColumn<QByteArray>("program");
    for (const int size : sizes)
        QTest::addRow("%d bytes", size) << lines(size);
    const QByteArray longLine(1000, 'X');
    QTest::newRow("lines longer than a block") << longLine + lineEnd + longLine + longLine;
    // Four line ends in a file are one blank line in the editor.
    QTest::newRow("blank lines") << "O1" + QByteArray(lineEnd).repeated(4) + "G0" + QByteArray(lineEnd).repeated(8) +
                                        "M30";
}

void LrzszTest::rxTakesWhatTheViewSends_data()
{
    addPrograms({1, 127, 128, 129, 256, 255 * 128}, "\n");
    QTest::newRow("CR LF") << lines(500).replace("\n", "\r\n");
}

void LrzszTest::rxTakesWhatTheViewSends()
{
    QFETCH(QByteArray, program);
    LrzszRig line(true);
    line.rig.machine->MCTXEOB = program.contains('\r') ? "CRLF" : "LF";
    line.rig.open(program);
    const QByteArray onWire = line.rig.editor->wholeText().replace("\n", program.contains('\r') ? "\r\n" : "\n");
    if (!program.contains("\n\n")) QCOMPARE(onWire, program);
    QCOMPARE(line.sendToRx(), padded(onWire, ' '));
    QVERIFY(line.peer.isContent());
}

// After 255 the view goes on with 1, as the controls it was made for do; rx expects 0 and gives up. It keeps nothing.
void LrzszTest::rxRefusesTheNumberOfBlock256()
{
    LrzszRig line(true);
    line.rig.open(lines(200'000));
    QCOMPARE(line.sendToRx(), QByteArray());
    QVERIFY(!line.peer.isContent());
    const QByteArray log = line.peer.log();
    QVERIFY2(log.contains("Sync Error"), log.constData());
    QCOMPARE(line.rig.state(), viewTX::TxState::txState_idle);
    QVERIFY(line.rig.isShown("btnSend") && !line.rig.isShown("boxWaitForCNC"));

    line.rig.open("O2\nM30\n");
    QCOMPARE(line.sendToRx(), padded("O2\nM30\n", ' '));
    QVERIFY(line.peer.isContent());
}

void LrzszTest::viewTakesWhatSxSends_data()
{
    addPrograms({0, 1, 127, 128, 129, 256, 33'000, 200'000}, "\r\n");
}

void LrzszTest::viewTakesWhatSxSends()
{
    QFETCH(QByteArray, program);
    LrzszRig line(false);
    QCOMPARE(line.takeFromSx(program), padded(program, '\x1A'));
    QVERIFY(line.peer.isContent());
    QVERIFY2(!line.rig.text("lblStatus").contains(u'\n'), qPrintable(line.rig.text("lblStatus"))); // nothing to tell

    line.rig.click("btnNew");
    QCOMPARE(line.takeFromSx("O2\r\n"), padded("O2\r\n", '\x1A'));
    QVERIFY(line.peer.isContent());
}

void LrzszTest::highBytesArriveWithoutBit7()
{
    QByteArray all;
    for (int code = 0; code < 256; ++code)
        all += static_cast<char>(code);
    LrzszRig line(false);
    QCOMPARE(line.takeFromSx(all), all.left(128) + all.left(128));
    QVERIFY(line.peer.isContent());
}

QTEST_MAIN(LrzszTest)
#include "transfer_lrzsz.moc"
