// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/ControlCodes.h"
#include "config/g.h"
#include "config/StringTools.h"

#include <QTest>

class ConversionsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void textBecomesBytes_data();
    void textBecomesBytes();
    void notationsBecomeCharacters_data();
    void notationsBecomeCharacters();
    void textIsCountedInCharacters();
    void charactersHaveValues_data();
    void charactersHaveValues();
};

void ConversionsTest::textBecomesBytes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char* name, const QString& text, const QByteArray& bytes) {
        QTest::newRow(name) << text << bytes;
    };
    row("line ends as they are", "%\r\na\r\rb\nc", "%\r\na\r\rb\nc");
    row("NUL and DEL", QStringLiteral("a") + QChar(0) + QChar(127), QByteArray("a\0\x7F", 3));
    row("accented letter", QString::fromUtf8("é"), "?");
    row("character outside the BMP becomes one byte", QString::fromUtf8("\xF0\x9F\x94\xA7 🇩🇪b"), "? ?b");
    row("CR LF in a text beyond Latin-1", QString::fromUtf8("№\r\n\r\n"), "?\r\n\r\n");
    row("unpaired surrogate", QStringLiteral("a") + QChar(0xD800) + 'b', "a?b");
}

void ConversionsTest::textBecomesBytes()
{
    QFETCH(QString, text);
    QTEST(g::getBytes(text), "bytes");
}

void ConversionsTest::notationsBecomeCharacters_data()
{
    QTest::addColumn<QString>("notation");
    QTest::addColumn<QString>("endOfBlock");
    QTest::addColumn<QString>("startOrEnd");
    const auto row = [](const char* notation, const QString& endOfBlock, const QString& startOrEnd) {
        QTest::newRow(notation) << notation << endOfBlock << startOrEnd;
    };
    row("CRLF", "\r\n", "CRLF");
    row("CRCR xLF", "\r\r x\n", "CRCR xLF");
    row("None (Default)", "\r\n", "");
    row("", "", "");
    row("37,13,10", "37,13,10", "%\r\n");
    row(" 37 , 10", " 37 , 10", "%\n");
    row("0,255", "0,255", QString(QChar(0)) + QChar(255));
    row("%,O1", "%,O1", "%O1");
    row("256,-1,1a", "256,-1,1a", "256-11a"); // not byte codes
}

void ConversionsTest::notationsBecomeCharacters()
{
    QFETCH(QString, notation);
    QTEST(ControlCodes::endOfBlock(notation), "endOfBlock");
    QTEST(ControlCodes::startOrEnd(notation), "startOrEnd");
}

void ConversionsTest::textIsCountedInCharacters()
{
    using namespace StringTools;
    const QString text = QString::fromUtf8("a\r\ne\u0301\xF0\x9F\x94\xA7"); // seven code units, four characters
    QCOMPARE(length(text), 4);
    QCOMPARE(indexOf(text, "\n"), -1); // half a character is no match
    QCOMPARE(subString(text, -2) + subString(text, 99) + subString(text, 1, 1), text + "\r\n");
    QCOMPARE(padLeft("7", 3, "0") + padRight(text, 6, "."), "007" + text + "..");
    QCOMPARE(strReplace("%a%%", "%", "x") + strReplace("a", {}, "b"), QStringLiteral("xaxxa"));
}

void ConversionsTest::charactersHaveValues_data()
{
    QTest::addColumn<QString>("character");
    QTest::addColumn<int>("unicode");
    QTest::addColumn<int>("utf8");
    QTest::addColumn<int>("utf16");
    const auto row = [](const char* name, const QString& character, int unicode, int utf8, int utf16) {
        QTest::newRow(name) << character << unicode << utf8 << utf16;
    };
    row("none", {}, 0, 0, 0);
    row("NUL", QString(QChar(0)), 0, 0, 0);
    row("DEL, the last one-byte code", QString(QChar(127)), 127, 127, 127);
    row("CR LF counts as CR", "\r\n", 13, 13, 13);
    row("two-byte letter", QString::fromUtf8("\u00E9"), 0xE9, 0xC3, 0xE9);
    row("letter and its accent", QString::fromUtf8("e\u0301"), 'e', 'e', 'e');
    row("character outside the BMP", QString::fromUtf8("\xF0\x9F\x94\xA7"), 0x1F527, 0xF0, 0xD83D);
    row("unpaired surrogate", QString(QChar(0xD83D)), 0xFFFD, 0xEF, 0xFFFD);
    row("surrogates in the wrong order", QString(QChar(0xDD27)) + QChar(0xD83D), 0xFFFD, 0xEF, 0xFFFD);
}

void ConversionsTest::charactersHaveValues()
{
    QFETCH(QString, character);
    QTEST(static_cast<int>(StringTools::unicodeValue(character)), "unicode");
    QTEST(static_cast<int>(StringTools::utf8Value(character)), "utf8");
    QTEST(static_cast<int>(StringTools::utf16Value(character)), "utf16");
}

QTEST_GUILESS_MAIN(ConversionsTest)
#include "config_conversions.moc"
