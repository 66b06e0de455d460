// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/Framing.h"
#include "transfer/LineEnds.h"
#include "transfer/XModemBlock.h"

#include <QTest>

class BytesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void controlTypeFromItsName_data();
    void controlTypeFromItsName();
    void fileBecomesEditorText_data();
    void fileBecomesEditorText();
    void fileInPiecesGivesTheSameText();
    void doubledLineEndsCollapseInOnePass_data();
    void doubledLineEndsCollapseInOnePass();
    void blockLayout();
    void blockNumbersNeverUseZero();
    void checksumCoversEveryByte();
    void blockIsGood_data();
    void blockIsGood();
};

void BytesTest::controlTypeFromItsName_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<ControlType>("type");
    QTest::newRow("Fanuc") << "Fanuc" << ControlType::Fanuc;
    QTest::newRow("okuma") << "okuma" << ControlType::Okuma;
    QTest::newRow("only the whole name counts") << "Fanuc 0M" << ControlType::General;
    QTest::newRow("Haas") << "Haas" << ControlType::General;
    QTest::newRow("nothing") << "" << ControlType::General;
}

void BytesTest::controlTypeFromItsName()
{
    QFETCH(QString, mode);
    QTEST(Framing::controlType(mode), "type");
}

void BytesTest::fileBecomesEditorText_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("LF") << QByteArray("a\nb\n") << QByteArray("a\nb\n");
    QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n") << QByteArray("a\nb\n");
    QTest::newRow("CR") << QByteArray("a\rb\r") << QByteArray("a\nb\n");
    QTest::newRow("blank line is folded away") << QByteArray("a\n\nb") << QByteArray("a\nb");
    QTest::newRow("three LF make two") << QByteArray("a\n\n\nb") << QByteArray("a\n\nb");
    QTest::newRow("blank line of CR LF") << QByteArray("a\r\n\r\nb") << QByteArray("a\n\nb");
    QTest::newRow("LF CR") << QByteArray("a\n\rb") << QByteArray("a\nb");
    QTest::newRow("NUL and byte codes above 127") << QByteArray("\0\x80\xFF", 3) << QByteArray("\0\xC2\x80\xC3\xBF", 5);
    QTest::newRow("empty") << QByteArray() << QByteArray();
}

void BytesTest::fileBecomesEditorText()
{
    QFETCH(QByteArray, file);
    LineEnds::FileToText fileToText;
    QTEST(fileToText.convert(file.constData(), file.size()), "text");
}

void BytesTest::fileInPiecesGivesTheSameText()
{
    const QByteArray file("\r\n\n\r\r\n\xFF\r\n\r\n\n\n\n\ra");
    LineEnds::FileToText whole;
    const QByteArray expected = whole.convert(file.constData(), file.size());
    for (qsizetype first = 0; first <= file.size(); ++first) {
        for (qsizetype second = first; second <= file.size(); ++second) {
            LineEnds::FileToText pieces;
            QByteArray text = pieces.convert(file.constData(), first);
            text += pieces.convert(file.constData() + first, second - first);
            text += pieces.convert(file.constData() + second, file.size() - second);
            QCOMPARE(text, expected);
        }
    }
}

void BytesTest::doubledLineEndsCollapseInOnePass_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<QByteArray>("shown");
    const auto row = [](const char* name, const QByteArray& chunk, const QByteArray& shown) {
        QTest::newRow(name) << chunk << shown;
    };
    row("pair of LF", "A\n\nB", "A\nB");
    row("three LF make two", "A\n\n\nB", "A\n\nB");
    row("four LF make two", "\n\n\n\n", "\n\n");
    row("pair of CR", "A\r\r", "A\r");
    row("CR LF pairs stay", "A\r\n\r\nB", "A\r\n\r\nB");
    row("CR LF LF CR CR", "\r\n\n\r\r", "\r\n\r");
    row("the LF pass may not make CR pairs it does not see", "\r\n\n\r", "\r\n\r");
    row("NUL between", QByteArray("\n\0\n", 3), QByteArray("\n\0\n", 3));
}

void BytesTest::doubledLineEndsCollapseInOnePass()
{
    QFETCH(QByteArray, chunk);
    QTEST(LineEnds::collapseDoubled(chunk), "shown");
}

void BytesTest::blockLayout()
{
    const QByteArray block = XModemBlock::build(5, "AB");
    const int sum = ('A' + 'B' + 126 * ' ') % 256;
    QCOMPARE(block, QByteArray("\x01\x05\xFA"
                               "AB") +
                        QByteArray(126, ' ') + static_cast<char>(sum));
    QCOMPARE(XModemBlock::data(block), "AB" + QByteArray(126, ' '));
    QCOMPARE(XModemBlock::build(255, QByteArray(128, '\0')), QByteArray("\x01\xFF\0", 3) + QByteArray(129, '\0'));
}

void BytesTest::blockNumbersNeverUseZero()
{
    QCOMPARE(XModemBlock::nextNumber(1), 2);
    QCOMPARE(XModemBlock::nextNumber(254), 255);
    QCOMPARE(XModemBlock::nextNumber(255), 1);
}

void BytesTest::checksumCoversEveryByte()
{
    QCOMPARE(int{XModemBlock::getCSum(QByteArray())}, 0);
    QCOMPARE(int{XModemBlock::getCSum(QByteArray("\xFF\x01"))}, 0);
    QCOMPARE(int{XModemBlock::getCSum(QByteArray(128, '\xFF'))}, 128);
    QCOMPARE(XModemBlock::getCSum(QStringLiteral("\u00FF\u0002")), QChar(1));
}

void BytesTest::blockIsGood_data()
{
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<bool>("good");
    const QByteArray low = XModemBlock::build(1, "G0"); // sum below 128
    const QByteArray high = XModemBlock::build(1, "Gz");
    const auto withSum = [](QByteArray block, int sum) {
        return block.replace(131, 1, QByteArray(1, static_cast<char>(sum)));
    };
    const int highSum = XModemBlock::getCSum(XModemBlock::data(high));
    QVERIFY(XModemBlock::getCSum(XModemBlock::data(low)) < 128 && highSum >= 128);
    QTest::newRow("whole, low sum") << low << true;
    QTest::newRow("whole, high sum") << high << true;
    QTest::newRow("high sum without its bit 7") << withSum(high, highSum & 0x7F) << true;
    QTest::newRow("wrong by one") << withSum(high, (highSum & 0x7F) + 1) << false;
    QTest::newRow("low sum with bit 7 set") << withSum(low, low[131] | 0x80) << false;
    QTest::newRow("changed data byte") << QByteArray(low).replace(50, 1, "x") << false;
    QTest::newRow("block number decides nothing") << QByteArray(low).replace(1, 2, "xx") << true;
    QTest::newRow("one byte short") << low.chopped(1) << false;
    QTest::newRow("start of the next behind it") << low + '\x01' << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void BytesTest::blockIsGood()
{
    QFETCH(QByteArray, block);
    QTEST(XModemBlock::isGood(block), "good");
}

QTEST_GUILESS_MAIN(BytesTest)
#include "transfer_bytes.moc"
