// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/LineSummary.h"
#include "shell/PortProblem.h"

#include <QTest>

#include <cerrno>

class WordsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lineIsDescribedAsThePortOpensIt_data();
    void lineIsDescribedAsThePortOpensIt();
    void bytesAreNamed_data();
    void bytesAreNamed();
    void failedPortNamesItsOwnCause_data();
    void failedPortNamesItsOwnCause();
};

void WordsTest::lineIsDescribedAsThePortOpensIt_data()
{
    QTest::addColumn<LineSummary::Line>("line");
    QTest::addColumn<QString>("words");
    using Line = LineSummary::Line;
    QTest::newRow("even parity") << Line{9600, 2, 1, 1} << "9600 baud, 7 data bits, even parity, 1 stop bit, XON/XOFF";
    QTest::newRow("seven bits") << Line{4800, 1, 2, 2} << "4800 baud, 7 data bits, no parity, 2 stop bits, RTS/CTS";
    QTest::newRow("eight bits") << Line{115200, 0, 1, 0}
                                << "115200 baud, 8 data bits, no parity, 1 stop bit, no flow control";
    QTest::newRow("XModem overrules the format")
        << Line{19200, 2, 1, 3} << "19200 baud, 8 data bits, no parity, 1 stop bit, XModem";
    // The port sets two stop bits for 2 alone, and no flow control for what it does not know.
    QTest::newRow("odd stored values") << Line{300, 7, 0, -1}
                                       << "300 baud, 8 data bits, no parity, 1 stop bit, no flow control";
}

void WordsTest::lineIsDescribedAsThePortOpensIt()
{
    QFETCH(LineSummary::Line, line);
    QTEST(LineSummary::describe(line), "words");
}

void WordsTest::bytesAreNamed_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("words");
    QTest::newRow("nothing") << QByteArray() << "";
    QTest::newRow("text and control codes") << QByteArray("%\r\n") << "% CR LF (25 0D 0A)";
    QTest::newRow("leader is counted") << QByteArray(20, '\0') + "%"
                                       << "20 x NUL % (20 x 00 25)";
    QTest::newRow("three in a row are not") << QByteArray("\n\n\n") << "LF LF LF (0A 0A 0A)";
    QTest::newRow("blank and delete are named") << QByteArray(" \x7F\x1F") << "space DEL US (20 7F 1F)";
    QTest::newRow("long text is cut") << QByteArray("ABCDEFGHIJKLMNOPQ")
                                      << "A B C D E F G H I J K L M N O P ... "
                                         "(41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 ...)";
}

void WordsTest::bytesAreNamed()
{
    QFETCH(QByteArray, bytes);
    QTEST(LineSummary::describe(bytes), "words");
}

void WordsTest::failedPortNamesItsOwnCause_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("says");
    const QString path = QStringLiteral("/dev/ttyUSB0");
    QTest::newRow("never chosen") << QString() << ENOENT << "No port has been chosen";
    QTest::newRow("unplugged") << path << ENOENT << "plugged in";
    QTest::newRow("unplugged while known") << path << ENXIO << "plugged in";
    QTest::newRow("not permitted") << path << EACCES << "dialout";
    QTest::newRow("held") << path << EBUSY << "in use by another program";
    QTest::newRow("a plain file") << path << ENOTTY << "not a serial port";
    QTest::newRow("odd speed") << path << EINVAL << "speed";
    QTest::newRow("anything else is told as it is") << path << EIO << "Input/output error";
}

void WordsTest::failedPortNamesItsOwnCause()
{
    QFETCH(QString, path);
    QFETCH(int, error);
    QFETCH(QString, says);
    const QString cause = PortProblem::likelyCause(path, error);
    QVERIFY2(cause.contains(says), qPrintable(cause));
}

QTEST_GUILESS_MAIN(WordsTest)
#include "shell_words.moc"
