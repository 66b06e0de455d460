// SPDX-License-Identifier: GPL-3.0-or-later
// What differs between two programs. A difference that is missed is a scrapped part; one that is none hides the others.
#include "program/ProgramCompare.h"

#include <QTest>

#include <algorithm>
#include <numeric>
#include <random>

using Side = Comparison::Side;

namespace
{
using Differences = QList<Comparison::Difference>;

Differences differencesOf(const QByteArray& left, const QByteArray& right, const CompareRules& rules = {true})
{
    return ProgramCompare::compare(left, right, rules)->differences();
}

// "2+1|3+0": line 2 on the left, nothing in front of line 3 on the right.
QString inWords(const Differences& differences)
{
    QStringList words;
    for (const auto& [left, right] : differences)
        words.append(QStringLiteral("%1+%2|%3+%4").arg(left.first).arg(left.count).arg(right.first).arg(right.count));
    return words.join(u' ');
}

// The left lines with those of the right in the place of what differs.
QByteArrayList applied(const Differences& differences, const QByteArrayList& left, const QByteArrayList& right)
{
    QByteArrayList lines;
    qsizetype at = 0;
    for (const auto& [out, in] : differences) {
        lines += left.sliced(at, out.first - 1 - at);
        lines += right.sliced(in.first - 1, in.count);
        at = out.first - 1 + out.count;
    }
    return lines + left.sliced(at);
}

// By trying everything.
qsizetype fewestLinesThatDiffer(const QByteArrayList& left, const QByteArrayList& right)
{
    std::vector<qsizetype> row(static_cast<std::size_t>(right.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const auto& line : left) {
        qsizetype diagonal = row[0]++;
        for (std::size_t at = 1; at < row.size(); ++at) {
            const qsizetype above = row[at];
            const bool same = line == right[static_cast<qsizetype>(at) - 1];
            row[at] = same ? diagonal : 1 + std::min(above, row[at - 1]);
            diagonal = above;
        }
    }
    return row.back();
}

class Chance
{
public:
    explicit Chance(unsigned seed) : numbers_(seed) {}
    qsizetype upTo(qsizetype most) { return std::uniform_int_distribution<qsizetype>(0, most)(numbers_); }
    QByteArrayList lines(qsizetype count, qsizetype kinds)
    {
        QByteArrayList lines;
        for (; count > 0; --count)
            lines.append("X" + QByteArray::number(upTo(kinds)));
        return lines;
    }
    // With some lines changed, taken out, put in and moved.
    QByteArrayList edited(QByteArrayList lines, qsizetype edits, qsizetype kinds)
    {
        for (; edits > 0; --edits) {
            const qsizetype at = upTo(lines.size());
            const qsizetype out = std::min(upTo(3), lines.size() - at);
            const auto in = upTo(3) == 0 ? lines.sliced(at, out) + lines.sliced(at, out) : this->lines(upTo(3), kinds);
            lines = lines.first(at) + in + lines.sliced(at + out);
        }
        return lines;
    }

private:
    std::mt19937 numbers_;
};
} // namespace

class ProgramCompareTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void findsWhatDiffers_data();
    void findsWhatDiffers();
    void blockNumbers_data();
    void blockNumbers();
    void whatStandsSideBySide_data();
    void whatStandsSideBySide();
    void fewestLinesDifferInShortPrograms();
    void makesTheOtherOfALongProgram_data();
    void makesTheOtherOfALongProgram();
    void endsWhenCancelled();
};

void ProgramCompareTest::findsWhatDiffers_data()
{
    QTest::addColumn<QByteArray>("left");
    QTest::addColumn<QByteArray>("right");
    QTest::addColumn<QString>("differences");
    const auto row = [](const char* name, const QByteArray& left, const QByteArray& right, const char* differences) {
        QTest::newRow(name) << left << right << QString::fromLatin1(differences);
    };
    row("both empty", "", "", "");
    row("nothing against blank lines", "", "\r\n\n \n", "");
    row("nothing against a line", "", "A", "1+0|1+1");
    row("a line against nothing", "A\n", "", "1+1|1+0");
    row("the same", "A\nB\n", "A\nB\n", "");
    row("a changed line", "A\nB\nC", "A\nX\nC", "2+1|2+1");
    row("a line put in", "A\nB", "A\nX\nB", "2+0|2+1");
    row("lines taken out at the head", "A\nB\nC", "C", "1+2|1+0");
    row("a line put in at the end", "A\n", "A\nB\n", "2+0|2+1");
    row("two differences", "A\nB\nC\nD", "B\nC\nX\nD\nE", "1+1|1+0 4+0|3+1 5+0|5+1");
    row("all", "A\nB", "C", "1+2|1+1");
    row("a moved line", "A\nB\nC\nD", "B\nC\nD\nA", "1+1|1+0 5+0|4+1");
    row("one of many that are the same", "A\nA\nA", "A\nA", "3+1|3+0");
    row("no line end at the end", "A\nB", "A\nB\n", "");
    row("line ends", "A\r\nB\rC\n", "A\nB\nC", "");
    row("line ends of a tape: LF CR CR", "A\n\r\rB\n\r\rC", "A\nB\nX", "7+1|3+1");
    row("empty lines are counted", "A\n\n\nB\n\nC\n\nD", "A\nX\nD", "4+3|2+1");
    row("blanks", "G0 X1.\t Y2. ", " G0X1.Y2.", "");
    row("capitals", "g0", "G0", "1+1|1+1");
    row("a leader", QByteArray(20, '\0') + "%\nA", "%\nA", "");
    row("a leader of its own line, and a trailer", QByteArray(20, '\0') + "\n%\nA\n%\n" + QByteArray(20, '\0'),
        "%\nA\n%", "");
    row("tape codes", "\x12%\x11\nA\n%\x14\n\x13\x7F\n", "%\nA\n%", "");
    row("a percent sign", "%\nA\n%", "A", "1+1|1+0 3+1|2+0");
    row("a code that a control may stumble over", "A\x05", "A", "1+1|1+1");
    row("a character of two bytes", "(\xC3\x84)", "(\xC3\x85)", "1+1|1+1");
    row("block numbers count", "N10 G0", "N20 G0", "1+1|1+1");
}

void ProgramCompareTest::findsWhatDiffers()
{
    QFETCH(QByteArray, left);
    QFETCH(QByteArray, right);
    QTEST(inWords(differencesOf(left, right)), "differences");
}

void ProgramCompareTest::blockNumbers_data()
{
    QTest::addColumn<QByteArray>("left");
    QTest::addColumn<QByteArray>("right");
    QTest::addColumn<bool>("isSame");
    const auto row = [](const char* left, const char* right, bool isSame) {
        QTest::addRow("%s, %s", left, right) << QByteArray(left) << QByteArray(right) << isSame;
    };
    row("N10 G0", "N20 G0", true);
    row("N10 G0", "n 5G0", true);
    row("N10 G0", "G0", true);
    row("N10", "", true);
    row("/N10 G0", "/N20 G0", true);
    row("/2 N10 G0", "/2 G0", true);
    row("N10 /G0", "/G0", true);
    row("/2 N10 G0", "/3 N10 G0", false);
    row("N10 G0", "N10 G1", false);
    row("NLAP1 G0", "NLAP2 G0", false); // a name
    row("G0 N10", "G0 N20", false);     // not at the head: where to go to
    row("(N10)", "(N20)", false);
    row("O10", "O20", false);
}

void ProgramCompareTest::blockNumbers()
{
    QFETCH(QByteArray, left);
    QFETCH(QByteArray, right);
    QTEST(differencesOf(left, right, {false}).isEmpty(), "isSame");
}

void ProgramCompareTest::whatStandsSideBySide_data()
{
    QTest::addColumn<QByteArray>("left");
    QTest::addColumn<QByteArray>("right");
    QTest::addColumn<QList<int>>("besideLeft"); // for each line of the left the line of the right
    QTest::addColumn<QList<int>>("besideRight");
    const auto row = [](const char* name, const QByteArray& left, const QByteArray& right, const QList<int>& besideLeft,
                        const QList<int>& besideRight) {
        QTest::newRow(name) << left << right << besideLeft << besideRight;
    };
    row("a changed line", "A\nB\nC", "A\nX\nC", {1, 2, 3}, {1, 2, 3});
    row("lines put in", "A\nB\nC", "A\nX\nY\nB\nC", {1, 4, 5}, {1, 2, 2, 2, 3});
    row("lines put in at the head", "A\nB", "X\nY\nA\nB", {3, 4}, {1, 1, 1, 2});
    row("one line for two", "A\nB\nC\nD", "A\nX\nD", {1, 2, 3, 3}, {1, 2, 4});
    row("more at the end", "A\nB", "A\nB\nC\nD", {1, 2}, {1, 2, 3, 4});
    row("line ends LF CR CR", "A\n\r\rB\n\r\rC", "A\nB\nC", {1, 2, 2, 2, 3, 3, 3}, {1, 4, 7});
}

void ProgramCompareTest::whatStandsSideBySide()
{
    QFETCH(QByteArray, left);
    QFETCH(QByteArray, right);
    const auto comparison = *ProgramCompare::compare(left, right, {});
    const auto beside = [&](Side side, qsizetype lines) {
        QList<int> numbers;
        for (int line = 1; line <= lines; ++line)
            numbers.append(static_cast<int>(comparison.beside(side, line)));
        return numbers;
    };
    QFETCH(QList<int>, besideLeft);
    QFETCH(QList<int>, besideRight);
    QCOMPARE(beside(Side::Left, besideLeft.size()), besideLeft);
    QCOMPARE(beside(Side::Right, besideRight.size()), besideRight);
}

void ProgramCompareTest::fewestLinesDifferInShortPrograms()
{
    Chance chance(11);
    for (int run = 0; run < 3000; ++run) {
        const qsizetype kinds = 1 + chance.upTo(run % 2 == 0 ? 4 : 40);
        const auto left = chance.lines(chance.upTo(40), kinds);
        const auto right =
            run % 3 == 0 ? chance.lines(chance.upTo(40), kinds) : chance.edited(left, chance.upTo(8), kinds);
        const auto differences = differencesOf(left.join('\n'), right.join('\r'));
        QCOMPARE(applied(differences, left, right), right);
        qsizetype lines = 0;
        for (const auto& difference : differences)
            lines += difference.left.count + difference.right.count;
        QCOMPARE(lines, fewestLinesThatDiffer(left, right));
    }
}

void ProgramCompareTest::makesTheOtherOfALongProgram_data()
{
    QTest::addColumn<qsizetype>("kinds"); // of lines: few make long stretches in which no line stands only once
    QTest::addColumn<qsizetype>("edits"); // -1: nothing to do with each other
    QTest::newRow("few changes") << qsizetype{1'000'000'000} << qsizetype{30};
    QTest::newRow("many changes") << qsizetype{1'000'000'000} << qsizetype{500};
    QTest::newRow("lines that come again") << qsizetype{300} << qsizetype{30};
    QTest::newRow("lines that come again, many changes") << qsizetype{300} << qsizetype{500};
    QTest::newRow("two kinds of lines") << qsizetype{1} << qsizetype{300};
    QTest::newRow("totally different") << qsizetype{1'000'000'000} << qsizetype{-1};
    QTest::newRow("totally different, of few lines") << qsizetype{5} << qsizetype{-1};
    QTest::newRow("totally different, of some lines") << qsizetype{20'000} << qsizetype{-1};
}

void ProgramCompareTest::makesTheOtherOfALongProgram()
{
    QFETCH(qsizetype, kinds);
    QFETCH(qsizetype, edits);
    Chance chance(3);
    const auto left = chance.lines(20'000, kinds);
    const auto right = edits < 0 ? chance.lines(25'000, kinds) : chance.edited(left, edits, kinds);
    const auto differences = differencesOf(left.join('\n'), right.join('\n'));
    QVERIFY(applied(differences, left, right) == right);
    if (edits >= 0) QVERIFY(differences.size() <= edits * 2); // a moved or doubled stretch may be two
    if (edits >= 0) QVERIFY(differences.size() >= edits / 4); // they were not thrown together
}

void ProgramCompareTest::endsWhenCancelled()
{
    const std::atomic<bool> cancelled = true;
    QVERIFY(!ProgramCompare::compare("A\n", "B\n", {}, &cancelled));
}

QTEST_APPLESS_MAIN(ProgramCompareTest)
#include "program_compare.moc"
