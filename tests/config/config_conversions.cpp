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
    row("one sign beyond the first plane is one byte", QString::fromUtf8("\xF0\x9F\x94\xA7 🇩🇪b"), "? ?b");
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
    row("256,-1,1a", "256,-1,1a", "256-11a"); // no byte codes
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
    QCOMPARE(indexOf(text, "\n"), -1); // half of a character is none
    QCOMPARE(subString(text, -2) + subString(text, 99) + subString(text, 1, 1), text + "\r\n");
    QCOMPARE(padLeft("7", 3, "0") + padRight(text, 6, "."), "007" + text + "..");
    QCOMPARE(strReplace("%a%%", "%", "x") + strReplace("a", {}, "b"), QStringLiteral("xaxxa"));
}

QTEST_GUILESS_MAIN(ConversionsTest)
#include "config_conversions.moc"
