// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/ControlCodes.h"
#include "config/g.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class ConversionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void getBytes_data();
    void getBytes();
    void everyByteBecomesOneCharacter();
    void asciiCharIsTheCharacterOfThatCode();
    void iValTakesDigitsOnly_data();
    void iValTakesDigitsOnly();
    void nullsOfNothingAreEmpty();
    void endOfBlock_data();
    void endOfBlock();
    void startOrEnd_data();
    void startOrEnd();
    void filesKeepEveryByte();
    void fileWriteRefusesWhatIsNotAscii();
    void missingFilesAreNoErrors();
};

void ConversionsTest::getBytes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("percent line") << "%\r\n" << QByteArray("%\r\n");
    QTest::newRow("CR LF between letters") << "a\r\nb" << QByteArray("a\r\nb");
    QTest::newRow("LF alone") << "\n" << QByteArray("\n");
    QTest::newRow("CR alone, twice") << "\r\r" << QByteArray("\r\r");
    QTest::newRow("NUL and DEL") << QStringLiteral("a") + QChar(0) + QChar(127) << QByteArray("a\0\x7F", 3);
    QTest::newRow("accented letter") << QString::fromUtf8("é") << QByteArray("?");
    QTest::newRow("letter and accent as two code points") << QString::fromUtf8("e\u0301") << QByteArray("e");
    QTest::newRow("one sign beyond the first plane is one byte")
        << QString::fromUtf8("\xF0\x9F\x94\xA7") << QByteArray("?");
    QTest::newRow("a flag of two code points is one byte") << QString::fromUtf8("a🇩🇪b") << QByteArray("a?b");
    QTest::newRow("CR LF in a text beyond Latin-1") << QString::fromUtf8("№\r\n\r\n") << QByteArray("?\r\n\r\n");
    QTest::newRow("unpaired surrogate") << QStringLiteral("a") + QChar(0xD800) + 'b' << QByteArray("a?b");
}

void ConversionsTest::getBytes()
{
    QFETCH(QString, text);
    QTEST(g::getBytes(text), "bytes");
}

void ConversionsTest::everyByteBecomesOneCharacter()
{
    QByteArray bytes;
    for (int code = 0; code < 256; ++code)
        bytes.append(static_cast<char>(code));
    const QString text = g::getString(bytes);
    QCOMPARE(text.size(), 256);
    for (int code = 0; code < 256; ++code)
        QCOMPARE(text[code].unicode(), static_cast<char16_t>(code));
}

void ConversionsTest::asciiCharIsTheCharacterOfThatCode()
{
    QCOMPARE(g::AsciiChar(0), QString(QChar(0)));
    QCOMPARE(g::AsciiChar(255), QString(QChar(255)));
    QCOMPARE(g::AsciiChar(0x1F527), QString::fromUtf8("\xF0\x9F\x94\xA7"));
}

void ConversionsTest::iValTakesDigitsOnly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("value");
    const auto row = [](const char* text, qint64 value) { QTest::newRow(text) << QString::fromUtf8(text) << value; };
    row("-7", -7);
    row("+7", 7);
    row("007", 7);
    row("12a", 0);
    row(" 5", 0);
    row("5 ", 0);
    row("", 0);
    row("-", 0);
    row("+-1", 0);
    row("1,000", 0);
    row("٣", 0); // a digit, but not of ours
    row("9223372036854775807", std::numeric_limits<qint64>::max());
    row("-9223372036854775808", std::numeric_limits<qint64>::min());
    row("9223372036854775808", 0);
}

void ConversionsTest::iValTakesDigitsOnly()
{
    QFETCH(QString, text);
    QTEST(g::iVal(text), "value");
}

void ConversionsTest::nullsOfNothingAreEmpty()
{
    QCOMPARE(g::nulls(20), QString(20, QChar(0)));
    QCOMPARE(g::nulls(0), QString());
    QCOMPARE(g::nulls(-3), QString());
}

void ConversionsTest::endOfBlock_data()
{
    QTest::addColumn<QString>("notation");
    QTest::addColumn<QString>("characters");
    QTest::newRow("CRLF") << "CRLF"
                          << "\r\n";
    QTest::newRow("LF") << "LF"
                        << "\n";
    QTest::newRow("twice and with a word") << "CRCR xLF"
                                           << "\r\r x\n";
    QTest::newRow("Default") << "Default"
                             << "\r\n";
    QTest::newRow("Default beside a code") << "LF (Default)"
                                           << "\r\n";
    QTest::newRow("literal") << "NONE"
                             << "NONE";
    QTest::newRow("lower case is literal") << "crlf"
                                           << "crlf";
    QTest::newRow("empty") << ""
                           << "";
}

void ConversionsTest::endOfBlock()
{
    QFETCH(QString, notation);
    QTEST(ControlCodes::endOfBlock(notation), "characters");
}

void ConversionsTest::startOrEnd_data()
{
    QTest::addColumn<QString>("notation");
    QTest::addColumn<QString>("characters");
    QTest::newRow("Default") << "None (Default)"
                             << "";
    QTest::newRow("Default among codes") << "37,Default"
                                         << "";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("codes") << "37,13,10"
                           << "%\r\n";
    QTest::newRow("blanks around a code") << " 37 , 10"
                                          << "%\n";
    QTest::newRow("NUL") << "0,0" << QString(2, QChar(0));
    QTest::newRow("text pieces are themselves, commas go") << "%,O1"
                                                           << "%O1";
    QTest::newRow("what is no byte code is itself") << "256,-1,1a"
                                                    << "256-11a";
}

void ConversionsTest::startOrEnd()
{
    QFETCH(QString, notation);
    QTEST(ControlCodes::startOrEnd(notation), "characters");
}

void ConversionsTest::filesKeepEveryByte()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("O1");
    QString text = "a\r\nb\rc\n";
    text += QChar(0);
    QVERIFY(g::fileWrite(path, text));
    QCOMPARE(g::fileRead(path), text);
    QVERIFY(g::fileWrite(path, "x")); // nothing of the longer file stays behind
    QCOMPARE(g::fileRead(path), QStringLiteral("x"));

    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("\xFF\x80\0", 3);
    file.close();
    QCOMPARE(g::fileRead(path), QString::fromLatin1("\xFF\x80\0", 3));
}

void ConversionsTest::fileWriteRefusesWhatIsNotAscii()
{
    const QTemporaryDir folder;
    QVERIFY(!g::fileWrite(folder.filePath("O1"), QString::fromUtf8("é")));
    QVERIFY(!g::fileExists(folder.filePath("O1")));
}

void ConversionsTest::missingFilesAreNoErrors()
{
    const QTemporaryDir folder;
    QVERIFY(!g::fileExists(folder.filePath("O1")));
    QVERIFY(!g::fileRead(folder.filePath("O1")));
    QVERIFY(!g::fileRead(folder.path()));
    QVERIFY(!g::fileWrite(folder.filePath("gone/O1"), "x"));
    QVERIFY(!g::fileWrite(folder.path(), "x"));
}

QTEST_GUILESS_MAIN(ConversionsTest)
#include "config_conversions.moc"
