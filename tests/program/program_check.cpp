// SPDX-License-Identifier: GPL-3.0-or-later
// What is found before a program is sent. A finding that is missed costs a part, one too many teaches operators to look
// away.
#include "program/ProgramCheck.h"
#include "program/StateInWords.h"

#include <random>

namespace
{
using Maker = CheckRules::Maker;

CheckRules rulesOf(Maker maker, bool strips = false)
{
    return {maker, strips, maker == Maker::Fanuc, maker == Maker::Fanuc};
}

CheckReport reportOf(const QByteArray& program, const CheckRules& rules)
{
    return *ProgramCheck::check(program, rules);
}

QString inWords(const CheckReport& report)
{
    QStringList words;
    for (const Finding& finding : report.findings)
        words.append(QStringLiteral("%1%2 %3")
                         .arg(finding.line)
                         .arg(finding.severity == Severity::Note ? QStringLiteral(" note:") : QStringLiteral(":"),
                              finding.text));
    return words.join(u'\n');
}
} // namespace

class ProgramCheckTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void findsInALine_data();
    void findsInALine();
    void findsInTheWhole_data();
    void findsInTheWhole();
    void samplesAreClean_data();
    void samplesAreClean();
    void afterEachChangeAsIfCheckedAnew();
    void aFlawInEveryLine();
    void endsWhenCancelled();
};

void ProgramCheckTest::findsInALine_data()
{
    QTest::addColumn<CheckRules>("rules");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("findings");
    const auto row = [](const char* name, CheckRules rules, const QByteArray& line, const char* findings) {
        QTest::newRow(name) << rules << line << QString::fromUtf8(findings);
    };
    const CheckRules any = rulesOf(Maker::Any), fanuc = rulesOf(Maker::Fanuc), okuma = rulesOf(Maker::Okuma);
    const CheckRules stripping = rulesOf(Maker::Fanuc, true);
    row("nothing", fanuc, "N10 G0 G90 X1. Y-2 Z+.5 R#1 ,R2. M3 M8 (A 'B' & C)", "");
    row("an umlaut in a comment", fanuc,
        "G0 (FL\xC3\x84"
        "CHE)",
        "2 note: \"\xC3\x84\" goes out as \"?\".");
    row("an umlaut in the program", any, "\xC3\x84", "2: \"\xC3\x84\" goes out as \"?\".");
    row("an umlaut that is stripped", stripping,
        "G0 (FL\xC3\x84"
        "CHE)",
        "");
    row("small letters", fanuc, "g0 x1.", "2: Small letters: many controls read capitals only.");
    row("small letters in a comment", fanuc, "G0 (rough)", "2 note: Small letters: many controls read capitals only.");
    row("small letters to any control", any, "g0 x1.", "");
    row("a foreign sign", fanuc, "G0 X1. ~", "2: \"~\" is not in the control's code.");
    row("a sign for comments only", fanuc, "G0 X1. @ (@)", "2: \"@\" is not in the control's code.");
    row("a control code", any, "G0\x13 X1.", "2: The control code 19 is not in the control's code.");
    row("Okuma's file head", okuma, "$A.MIN%", "");
    row("255 characters", any, "(" + QByteArray(253, 'A') + ")", "");
    row("256 characters", any, "(" + QByteArray(254, 'A') + ")",
        "2: The block has 256 characters; many controls take no more than 255.");
    row("255 characters in more bytes", any, "(" + QByteArray("\xC3\x84").repeated(253) + ")",
        "2 note: \"\xC3\x84\" goes out as \"?\".");
    row("256 characters, stripped", stripping, "X1.   (" + QByteArray(254, 'A') + ")", "");
    row("an open comment", fanuc, "G0 (ROUGH", "2: The comment is not closed.");
    row("an open comment, stripped", stripping, "G0 (ROUGH X1.",
        "2: The comment is not closed: all that follows it on the line is stripped.");
    row("a word twice", fanuc, "G0 X1. Y2. X3.", "2: X stands twice in the block.");
    row("a word twice, around a comment", fanuc, "X1.(X)X2.", "2: X stands twice in the block.");
    row("corners and words of the same letter", fanuc, "G1 X1. R2. ,R3.", "");
    row("arguments of a macro", fanuc, "G65 P9010 I1. J1. I2. J2.", "");
    row("a block to go to", okuma, "N5 IF [VC1 EQ 2] N9", "");
    row("no number", fanuc, "G0 X Y1.", "2: X has no number.");
    row("two points", fanuc, "G0 X1.2.3", "2: X1.2.3: that is no number.");
    row("worked out", fanuc, "G0 X#1 Y[#2*3] Z-#4", "");
    row("nested, stripped", stripping, "G0 (A (B) C) X1.",
        "2: The comment has another in it and is stripped up to the first \")\": what follows goes out as program: "
        "\"C) X1.\".\n2: C has no number.");
    row("nested, sent whole: the first ) ends it", fanuc, "G0 (A (B) C)", "2: C has no number.");
    row("two comments side by side", stripping, "(A) (B)", "");
    row("what stands behind a semicolon is stripped", stripping, "G0 ; \xC3\x84 X X", "");
}

void ProgramCheckTest::findsInALine()
{
    QFETCH(CheckRules, rules);
    QFETCH(QByteArray, line);
    const CheckRules whole{rules.maker, rules.stripsComments, true, true};
    QTEST(inWords(reportOf("O1\n" + line + "\nM30", whole)), "findings");
}

void ProgramCheckTest::findsInTheWhole_data()
{
    QTest::addColumn<CheckRules>("rules");
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QString>("findings");
    const auto row = [](const char* name, CheckRules rules, const char* program, const char* findings) {
        QTest::newRow(name) << rules << QByteArray(program) << QString::fromUtf8(findings);
    };
    const CheckRules any = rulesOf(Maker::Any), fanuc = rulesOf(Maker::Fanuc), okuma = rulesOf(Maker::Okuma);
    const CheckRules framed{Maker::Any, false, true, true};
    const char* const noHead = "0 note: Neither the program nor the machine's start string begins with %.\n";
    row("empty", any, "\n\n", "");
    row("Fanuc's % come from the program", fanuc, "O1\nM30", "");
    row("Fanuc's own % are taken out", fanuc, "%\nO1\nM30\n%\n", "");
    row("framed by itself", any, "\n%\nG0\nM30\n%\n\n", "");
    row("framed by the machine's strings", framed, "G0\nM30", "");
    row("not framed", any, "G0\nM30",
        qPrintable(noHead + QStringLiteral("0 note: Neither the program nor the machine's end string ends with %.")));
    row("no % at the head", any, "G0\nM30\n%", qPrintable(QString::fromLatin1(noHead).trimmed()));
    row("framed twice", framed, "%\nG0\nM30\n%",
        "1: The machine's start string sends a % too: the control gets two.\n"
        "4: The machine's end string sends a % too: the control gets two.");
    row("a % inside", fanuc, "%\nO1\nM30\n%\nO2\nM30\n%",
        "4: This % is taken out: what stands before and behind it goes out as one program.");
    row("a label before the first %", fanuc, "PART 7\n%\nO1\nM30\n%",
        "2: This % is taken out: what stands before and behind it goes out as one program.");
    row("text behind the last %", fanuc, "%\nO1\nM30\n%\n\nNOTE 5",
        "6: Text stands behind the last %: it goes out as part of the program.");
    row("text behind an Okuma's %", okuma, "$A.MIN%\nG0\nM2\n%\nG1",
        "5: Text stands behind the last %: the control may not read it, or take it for another program.");
    row("a % in a comment", fanuc, "O1 (50%)\nM30", "");
    row("no O number", fanuc, "G0\nM30",
        "0: The program has no O number: the control may refuse it or store it under another.");
    row("a colon is an O", fanuc, ":1\nM30", "");
    row("calls are no O numbers", okuma, "CALL O1\nCALL O1\nM2", "");
    row("an O number twice", fanuc, "O0001\nM30\nN1 O2\nM99\nO1\nM99",
        "5: O1 begins a second time; the first is on line 1.");
    row("no end", okuma, "G0", "0: The program has no end: M02, M30 or RTS.");
    row("no end of the second", fanuc, "O1\nM30\nO2\nG0",
        "3: The program that begins here has no end: M02, M30 or M99.");
    row("no end of the first", fanuc, "O1\nO2\nM30", "1: The program that begins here has no end: M02, M30 or M99.");
    row("an end that may be skipped", fanuc, "O1\n/M30",
        "1: The program that begins here has no end: M02, M30 or M99.");
    row("every kind of end", fanuc, "O1\nM02\nO2\nM2\nO3\nM99P10\nO4\nN9 G0 M30", "");
    row("Okuma's return", okuma, "O1\nRTS", "");
}

void ProgramCheckTest::findsInTheWhole()
{
    QFETCH(CheckRules, rules);
    QFETCH(QByteArray, program);
    QTEST(inWords(reportOf(program, rules)), "findings");
}

void ProgramCheckTest::samplesAreClean_data()
{
    QTest::addColumn<Maker>("maker");
    for (const char* name :
         {"O0042-bolt-circle.nc", "O1001-bracket.nc", "O1200-drilling.nc", "O2200-shaft.nc", "O2500-cam.nc",
          "O3000-surface.nc", "O3200-pockets-with-subprogram.nc", "O4200-incremental-pocket.nc", "O5200-five-axis.nc"})
        QTest::newRow(name) << Maker::Fanuc;
    QTest::newRow("shaft.min") << Maker::Okuma;
}

void ProgramCheckTest::samplesAreClean()
{
    QFETCH(Maker, maker);
    QCOMPARE(inWords(reportOf(sample(QString::fromLatin1(QTest::currentDataTag())), rulesOf(maker))), QString());
}

// Random changes to a text, each told to the check by its lines.
void ProgramCheckTest::afterEachChangeAsIfCheckedAnew()
{
    std::mt19937 chance(7);
    const auto upTo = [&chance](qsizetype most) { return std::uniform_int_distribution<qsizetype>(0, most)(chance); };
    const QByteArrayList pieces{"",      "%",   "O1",       "O2 (A", "G0 X1. X2.", "M30", "x",
                                "(A(B)", "M99", "\xC3\x84", "G1 Y",  "RTS",        "O1",  "(50%)"};
    const CheckRules rules = rulesOf(Maker::Fanuc, true);
    ProgramCheck changed(rules);
    QByteArrayList lines{""};
    for (int change = 0; change < 2000; ++change) {
        const qsizetype first = upTo(lines.size() - 1);
        const qsizetype removed = std::min(1 + upTo(3), lines.size() - first);
        QByteArrayList added{pieces[upTo(pieces.size() - 1)]};
        for (auto more = upTo(lines.size() < 40 ? 4 : 1); more > 0; --more)
            added.append(pieces[upTo(pieces.size() - 1)]);
        lines = lines.first(first) + added + lines.sliced(first + removed);
        changed.replaceLines(first + 1, removed, added.join('\n'));
        QCOMPARE(changed.lineCount(), lines.size());
        const auto report = changed.report([&lines](qsizetype number) { return lines[number - 1]; });
        QCOMPARE(inWords(report), inWords(reportOf(lines.join('\n'), rules)));
        QCOMPARE(report.counts, reportOf(lines.join('\n'), rules).counts);
    }
}

void ProgramCheckTest::aFlawInEveryLine()
{
    constexpr qsizetype lines = 50'000;
    const auto report = reportOf("O1\n" + QByteArray("X1. X2.\n").repeated(lines) + "M30", rulesOf(Maker::Fanuc));
    QCOMPARE(report.findings.size(), CheckReport::mostFindings);
    QCOMPARE(report.counts[static_cast<std::size_t>(FindingKind::DoubledWord)], lines);
    QCOMPARE(report.total, lines);
}

void ProgramCheckTest::endsWhenCancelled()
{
    const std::atomic<bool> cancelled = true;
    QVERIFY(!ProgramCheck::check(QByteArray("X1.\n").repeated(100'000), rulesOf(Maker::Fanuc), &cancelled));
}

QTEST_APPLESS_MAIN(ProgramCheckTest)
#include "program_check.moc"
