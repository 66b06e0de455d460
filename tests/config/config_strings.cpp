// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/StringTools.h"

#include <QTest>

using namespace StringTools;

class StringsTest : public QObject
{
    Q_OBJECT
    // Seven code units, four characters: a, CR LF, e with an accent, a tool.
    const QString text_ = QString::fromUtf8("a\r\ne\u0301\xF0\x9F\x94\xA7");
    const QString tool_ = QString::fromUtf8("\xF0\x9F\x94\xA7");

private Q_SLOTS:
    void lengthCountsWhatAReaderSees();
    void positionsAreInCharacters();
    void partsAreClampedToTheText();
    void paddingFillsUpToTheLength();
    void replacingTouchesEveryOccurrence();
    void unicodeValueOfAHalfCharacter();
    void wordsForNumbersAndFlags();
};

void StringsTest::lengthCountsWhatAReaderSees()
{
    QCOMPARE(length(text_), 4);
    QCOMPARE(length({}), 0);
    QCOMPARE(length("\r\n\n\r"), 3);
    QCOMPARE(characters(text_).join(QString()), text_);
}

void StringsTest::positionsAreInCharacters()
{
    QCOMPARE(indexOf(text_, tool_), 3);
    QCOMPARE(indexOf(text_, "\n"), -1); // half of a character is none
    QCOMPARE(indexOf("abcabd", "abd"), 3);
    QCOMPARE(indexOf("ab", "abc"), -1);
    QCOMPARE(character(text_, 1), QStringLiteral("\r\n"));
    QCOMPARE(character(text_, 4), QString());
    QCOMPARE(character(text_, -1), QString());
}

void StringsTest::partsAreClampedToTheText()
{
    QCOMPARE(subString(text_, 3), tool_);
    QCOMPARE(subString(text_, 4), QString());
    QCOMPARE(subString(text_, 99), QString());
    QCOMPARE(subString(text_, -2), text_);
    QCOMPARE(subString(text_, 1, 1), QStringLiteral("\r\n"));
    QCOMPARE(ssubString(text_, 2, 99), QString::fromUtf8("e\u0301") + tool_);
    QCOMPARE(subString(text_, 2, -1), QString());
}

void StringsTest::paddingFillsUpToTheLength()
{
    QCOMPARE(padLeft("7", 3, "0"), QStringLiteral("007"));
    QCOMPARE(padRight(text_, 6, "."), text_ + "..");
    QCOMPARE(padLeft("1234", 3, "0"), QStringLiteral("1234"));
}

void StringsTest::replacingTouchesEveryOccurrence()
{
    QCOMPARE(strReplace("%a%%", "%", "x"), QStringLiteral("xaxx"));
    QCOMPARE(strReplace("aaa", "aa", "b"), QStringLiteral("ba"));
    QCOMPARE(strReplace("a", {}, "b"), QStringLiteral("a"));
}

void StringsTest::unicodeValueOfAHalfCharacter()
{
    QCOMPARE(unicodeValue(tool_), char32_t{0x1F527});
    QCOMPARE(unicodeValue(tool_.left(1)), char32_t{65533});
    QCOMPARE(unicodeValue(tool_.right(1)), char32_t{65533});
    QCOMPARE(unicodeValue("\r\n"), char32_t{13});
}

void StringsTest::wordsForNumbersAndFlags()
{
    QCOMPARE(ToString(qint64{-1200}), QStringLiteral("-1200"));
    QCOMPARE(ToString(true) + ToString(false), QStringLiteral("truefalse"));
}

QTEST_GUILESS_MAIN(StringsTest)
#include "config_strings.moc"
