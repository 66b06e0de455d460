// SPDX-License-Identifier: GPL-3.0-or-later
// The blocks that a start in the middle sends first, their order and what they are warned of.
#include "program/Restart.h"
#include "program/StateInWords.h"

#include <QRegularExpression>

#include <algorithm>

using Moves = StartBlock::Moves;

namespace
{
Restart restartAt(const QString& file, const QByteArray& line, Control control)
{
    const QByteArray program = sample(file);
    return proposeRestart(stateAbove(lineOf(program, line), program, control));
}

bool warns(const Restart& restart, const QString& words)
{
    return std::any_of(restart.warnings.begin(), restart.warnings.end(),
                       [&words](const StartWarning& warning) { return warning.text.contains(words); });
}

constexpr auto FM = Control::FanucMill, FL = Control::FanucLathe, OM = Control::OkumaMill, OL = Control::OkumaLathe;
} // namespace

class ProgramRestartTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void blocks_data();
    void blocks();
    void warnsOf_data();
    void warnsOf();
    void nothingMovesBeforeToolAndSpindle();
    void everyBlockKnowsItsLines();
    void whatIsNotPlainIsLeftOut();
    void noStartWhereTheNextBlockWouldGoAstray_data();
    void noStartWhereTheNextBlockWouldGoAstray();
};

void ProgramRestartTest::blocks_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<Control>("control");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char* file, const char* line, Control control, const QByteArrayList& lines) {
        QTest::addRow("%s %s", file, QByteArray(line).replace('\n', ' ').constData())
            << QString::fromLatin1(file) << QByteArray(line) << control << lines.join('\n') + '\n';
    };
    row("O1200-drilling.nc", "N200", FM,
        {"G21", "G17", "G90", "G99", "G40", "G80", "G54", "T4 M6", "S1900 M3", "M8", "G0 G43 H4 Z50.", "G0 X140. Y20.",
         "G0 F240", "G83 Q4. R3. Z-24. K0"});
    row("O1001-bracket.nc", "N200", FM,
        {"G21", "G17", "G90", "G40", "G54", "T2 M6", "S4200 M3", "M8", "G0 G43 H2 Z50.", "G0 G41 D2 X120. Y-8.",
         "G1 Z-8. F800", "G2 F800"});
    row("O4200-incremental-pocket.nc", "N220", FM,
        {"G21", "G17", "G90", "G94", "G40", "G55", "T2 M6", "S2200 M3", "M8", "G0 G43 H2 Z40.", "G0 X52. Y25.",
         "G1 Z-6. F480", "G91", "G1 F480"});
    row("O5200-five-axis.nc", "N130", FM,
        {"G21", "G17", "G90", "G94", "G40", "G54.1 P2", "T11 M6", "S9000 M3", "M8", "G0 B-29.709 C49.468",
         "G0 G43.4 H11 Z60.", "G0 X27.694 Y-13.549", "G1 Z7.332 F2400", "G1 F2400"});
    row("O3200-pockets-with-subprogram.nc", "N90", FM,
        {"G21", "G17", "G90", "G40", "G54", "T6 M6", "S3600 M3", "M8", "G43 H6", "G0 X85. Y60.", "G0"});
    row("O2200-shaft.nc", "N220", FL,
        {"G21", "G18", "G99", "G40", "T0303", "G50 S2800", "G96 S240 M3", "M8", "G0 G42 X64. Z2.", "G0 F0.28"});
    row("shaft.min", "G0 X28\nX400", OL,
        {"G90", "T050505", "G50 S2500", "G97 S900 M3", "M8", "G0 X28 Z-25", "G1 X17.6 F0.06", "G1 F0.06"});
}

void ProgramRestartTest::blocks()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, line);
    QFETCH(Control, control);
    QTEST(restartAt(file, line, control).text(), "text");
}

void ProgramRestartTest::warnsOf_data()
{
    QTest::addColumn<Control>("control");
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QString>("words");
    const auto row = [](const char* name, Control control, const char* program, const char* words) {
        QTest::newRow(name) << control << QByteArray(program) << QString::fromLatin1(words);
    };
    row("always", FM, "", "clear of the work by hand");
    row("a canned cycle", FM, "G98 G0 X1. Z9.\nG81 Z-1. R1.", "the cycle G81 of line 2");
    row("cutter compensation", FM, "G41 D1 X1.", "G41 is on");
    row("incremental mode", FM, "G91", "a wrong position stays wrong");
    row("a lost axis", FM, "Y1.\nM98 P7", "Where Y stands is not known since line 2 (M98 P7)");
    row("a reference point", FM, "G28 Z0", "Z stands at its reference point since line 1 (G28)");
    row("a call", FM, "M98 P7", "M98 P7 may have changed");
    row("a jump", FM, "GOTO 5", "GOTO 5 decides which lines run");
    row("a variable", FM, "#1=5", "#1=5: the value is not in the program");
    row("block skip", FM, "/M8", "Lines that begin with /");
    row("a word not understood", FM, "G5.1 Q1", "Not understood: G5.1");
    row("the control's memory", FM, "G10 L2 P1 X0", "G10 writes into the control's memory");
    row("another zero point", FM, "G92 X0", "G92 X0 set the zero point");
    row("another program", FM, "M30\nO5\nX1.", "another begins here O5: what its caller");
    row("no tool", FM, "G90 X1.", "No tool is called");
    row("no clear height", FM, "G90 X1.", "No clear height is known");
    row("no distance mode", FM, "X1.", "read as absolute");
    row("no length", FM, "X1.", "No tool length is said");
    row("the length of another tool", FM, "G43 H1\nT2 M6", "G43 H1 was said before the tool change of line 2");
    row("a doubtful tool", FM, "T1\nT2 M6", "Which tool is in the spindle is not sure");
    row("time as feed", FM, "G93", "G93");
    row("cutting speed without a limit", FL, "G96 S180 M3", "without a highest spindle speed");
    row("no way in", FL, "G1 X5. Z5.", "went to no place in rapid");
}

void ProgramRestartTest::warnsOf()
{
    QFETCH(Control, control);
    QFETCH(QByteArray, program);
    QFETCH(QString, words);
    QVERIFY(warns(proposeRestart(stateAtEnd(program, control)), words));
    // A plain start is warned of nothing else.
    const QByteArray plain = control == FL ? "G50 S9\nT0101\nG0 X5. Z5." : "G90\nT1 M6\nG43 H1 G0 Z9.\nX1. Y1.";
    QCOMPARE(warns(proposeRestart(stateAtEnd(plain, control)), words), program.isEmpty());
}

void ProgramRestartTest::nothingMovesBeforeToolAndSpindle()
{
    for (const auto& [file, line, control] :
         {std::tuple{"O1200-drilling.nc", "N200", FM}, {"O5200-five-axis.nc", "N130", FM}, {"shaft.min", "X400", OL}}) {
        const auto restart = restartAt(QString::fromLatin1(file), line, control);
        const auto& blocks = restart.blocks;
        const auto is = [](Moves moves) { return [moves](const StartBlock& block) { return block.moves == moves; }; };
        const auto move = std::find_if(blocks.begin(), blocks.end(), is(Moves::Axes));
        QVERIFY(move != blocks.end());
        QCOMPARE(std::count_if(blocks.begin(), move, is(Moves::Changer)), 1);
        QVERIFY(std::any_of(blocks.begin(), move, [](const StartBlock& block) { return block.text.contains("M3"); }));
        const QRegularExpression place(QStringLiteral("^(?!G83|G54).*[XYZBC]-?[0-9.]"));
        for (const auto& block : blocks)
            QCOMPARE(block.moves == Moves::Axes, place.match(QString::fromLatin1(block.text)).hasMatch());
    }
}

void ProgramRestartTest::everyBlockKnowsItsLines()
{
    const auto blocks = restartAt(QStringLiteral("O4200-incremental-pocket.nc"), "N220", FM).blocks;
    const auto linesOf = [&blocks](const QByteArray& text) {
        const auto found = std::find_if(blocks.begin(), blocks.end(), [&](const auto& b) { return b.text == text; });
        return found == blocks.end() ? QList<qsizetype>{-1} : found->lines;
    };
    QCOMPARE(linesOf("T2 M6"), QList<qsizetype>{4});
    QCOMPARE(linesOf("G0 G43 H2 Z40."), QList<qsizetype>{6});
    QCOMPARE(linesOf("G0 X52. Y25."), (QList<qsizetype>{20, 23})); // Y was last moved on line 20
    QCOMPARE(linesOf("G90"), QList<qsizetype>{});                  // the start's own
}

void ProgramRestartTest::whatIsNotPlainIsLeftOut()
{
    const auto restart = proposeRestart(stateAtEnd("T#5 M6\nG90 G1 X#1 Y2. F#2 S#3 M3\nM98 P1\nG0 Z5. M8"));
    QByteArrayList blocks;
    for (const auto& block : restart.blocks)
        blocks.append(block.text + (block.isSure ? "" : "~"));
    // What stands before a call is not sure.
    QCOMPARE(blocks, (QByteArrayList{"G90~", "M3~", "M8", "G0 Z5.", "G0"}));
}

void ProgramRestartTest::noStartWhereTheNextBlockWouldGoAstray_data()
{
    QTest::addColumn<Control>("control");
    QTest::addColumn<QByteArray>("program");
    QTest::newRow("thread cycle: X27.7 would be rapid") << FL << QByteArray("G0 X34. Z6.\nG92 X29. Z-36. F2.");
    QTest::newRow("in a thread") << FL << QByteArray("G0 X30. Z5.\nG32 Z-20. F2.");
    QTest::newRow("contour of a cycle") << FL << QByteArray("G0 X50. Z2.\nG71 P1 Q9 F.2\nN1 G0 X20.\nG1 Z-5.");
    QTest::newRow("turned coordinates") << FM << QByteArray("G0 X1. Y1. Z5.\nG68 X0 Y0 R45.");
    QTest::newRow("zero point in the other unit") << FM << QByteArray("G21\nG52 X5.\nG20");
    QTest::newRow("work offset worked out") << FM << QByteArray("G54.1 P#5");
    QTest::newRow("zero point worked out") << FM << QByteArray("G52 X#1");
    QTest::newRow("a cycle's depth worked out") << FM << QByteArray("G98 G0 X1. Z5.\nG81 Z#1 R1.");
    QTest::newRow("Okuma's cycle") << OM << QByteArray("M54 G0 X1. Z5.\nG81 Z-5. R1.");
}

void ProgramRestartTest::noStartWhereTheNextBlockWouldGoAstray()
{
    QFETCH(Control, control);
    QFETCH(QByteArray, program);
    const auto restart = proposeRestart(stateAtEnd(program, control));
    QVERIFY(restart.blocks.isEmpty());
    QVERIFY(warns(restart, QStringLiteral("No start is possible here")));
}

QTEST_APPLESS_MAIN(ProgramRestartTest)
#include "program_restart.moc"
