// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/LineWords.h"

#include <QTest>

class LineWordsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void linesInWords_data();
    void linesInWords();
    void portNameHasNoFolder();
};

void LineWordsTest::linesInWords_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<qint64>("flow");
    QTest::addColumn<qint64>("dataFormat");
    QTest::addColumn<qint64>("stopBits");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("shortLine");
    QTest::addColumn<QString>("openedLine");
    const auto row = [](const QString& port, qint64 flow, qint64 dataFormat, qint64 stopBits, const char* line,
                        const QString& shortLine, const QString& openedLine) {
        QTest::addRow("flow %lld, format %lld", flow, dataFormat)
            << port << flow << dataFormat << stopBits << QString::fromUtf8(line) << shortLine << openedLine;
    };
    row("/dev/ttyS1", 0, 0, 1, "ttyS1  ·  9600 baud  ·  8 data bits, no parity, 1 stop bit  ·  No flow control",
        "ttyS1,9600,n,8,1\r\nNo flow control", "9600 baud, 8 data bits, no parity, 1 stop bit, no flow control");
    row("COM1", 1, 2, 2, "COM1  ·  9600 baud  ·  7 data bits, even parity, 2 stop bits  ·  XON/XOFF",
        "COM1,9600,e,7,2\r\nXON/XOFF", "9600 baud, 7 data bits, even parity, 2 stop bits, XON/XOFF");
    row("", 2, 1, 1, "No port  ·  9600 baud  ·  7 data bits, no parity, 1 stop bit  ·  RTS/CTS", "NONE",
        "9600 baud, 7 data bits, no parity, 1 stop bit, RTS/CTS");
    // The record's format is not the one that XModem opens the port with.
    row("/dev/ttyS1", 3, 2, 1, "ttyS1  ·  9600 baud  ·  7 data bits, even parity, 1 stop bit  ·  XModem",
        "ttyS1,9600,e,7,1\r\nXModem", "9600 baud, 8 data bits, no parity, 1 stop bit, XModem");
    row("/dev/ttyS1", 4, 9, 1, "ttyS1  ·  9600 baud  ·  8 data bits, no parity, 1 stop bit  ·  No flow control",
        "ttyS1,9600,n,8,1\r\nNo flow control", "9600 baud, 8 data bits, no parity, 1 stop bit, no flow control");
    row("/dev/ttyS1", -1, -1, 1, "ttyS1  ·  9600 baud  ·  8 data bits, no parity, 1 stop bit  ·  No flow control",
        "ttyS1,9600,n,8,1\r\nNo flow control", "9600 baud, 8 data bits, no parity, 1 stop bit, no flow control");
}

void LineWordsTest::linesInWords()
{
    QFETCH(QString, port);
    QFETCH(qint64, flow);
    QFETCH(qint64, dataFormat);
    QFETCH(qint64, stopBits);
    MachineRecord mc;
    mc.MCPORT = port;
    mc.MCBAUD = 9600;
    mc.MCFLOW = flow;
    mc.MCDBPAR = dataFormat;
    mc.MCSBITS = stopBits;
    QTEST(LineWords::line(mc), "line");
    QTEST(LineWords::shortLine(mc), "shortLine");
    QTEST(LineWords::openedLine({9600, ::dataFormat(dataFormat), stopBits, flowControl(flow)}), "openedLine");
}

void LineWordsTest::portNameHasNoFolder()
{
    QCOMPARE(LineWords::portName("/dev/pts/3"), QStringLiteral("pts/3"));
    QCOMPARE(LineWords::portName("x/dev/ttyS0"), QStringLiteral("x/dev/ttyS0"));
    QCOMPARE(LineWords::portName({}), QString());
}

QTEST_GUILESS_MAIN(LineWordsTest)
#include "config_line_words.moc"
