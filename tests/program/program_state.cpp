// SPDX-License-Identifier: GPL-3.0-or-later
// What is in force above a line, by control type. What is not certain must never read as certain.
#include "program/StateInWords.h"

#include "program/StateRows.h"

namespace
{
constexpr auto FM = Control::FanucMill, FL = Control::FanucLathe, OM = Control::OkumaMill, OL = Control::OkumaLathe;

void addRow(const char* name, Control control, const char* program, const char* state)
{
    QTest::newRow(name) << control << QByteArray(program) << QByteArray(state);
}

void addLathesAndOkumas()
{
    const auto row = addRow;
    row("lathe: U and W are steps", FL, "G0 X50. Z2.\nU-1.5 W-10.", "G0 X48.5 Z-8.");
    row("lathe: a T word changes the tool", FL, "G0 X50. Z2.\nT0303", "G0 tool T0303 X? Z?");
    row("lathe: limit and cutting speed", FL, "G50 S2500\nG96 S180 M3", "G96 M3 S180 G50 S2500");
    row("lathe: G98 and G99 are feeds", FL, "G99 F.2", "G99 F.2");
    row("lathe: a turning cycle comes back", FL, "G0 X50. Z2.\nG90 X45. Z-20. F.2\nX42.",
        "G0 cycle G90 X42. Z-20. F.2 X50. Z2.");
    row("lathe: G90 alone is of another code system", FL, "G90\nX5.", "X5.");
    row("lathe: the contour of a cycle is not driven", FL,
        "G0 X50. Z2.\nG71 U2. R1.\nG71 P10 Q20 U.4 W.1 F.3\nN10 G0 X20.\nG1 Z-30. F.1\nN20 X50.\nM8",
        "G0 M8 F.3 X50. Z2.");
    row("lathe: G28 by steps", FL, "X5. Z5.\nG28 U0 W0", "X@ Z@");

    row("Okuma mill: G15 H is the offset, G56 H the length", OM, "G15 H3\nG56 H12 Z50.", "G15 H3 G56 H12 Z50.");
    row("Okuma mill: G54 is no work offset", OM, "X1.\nG54 H2", "G54 H2 X1.");
    row("Okuma mill: home position", OM, "X1. Z1.\nG30 P1", "X? Z?");
    row("Okuma mill: return level by M code", OM, "G90 M54 G0 Z50.\nG81 X1. Z-5. R2.",
        "G90 M54 G0 cycle G81 R2. Z-5. X1. Z2.");
    row("Okuma mill: call", OM, "X1. F5.\nCALL O100", "F5.~ X?");
    row("Okuma mill: set by a variable", OM, "X=VC1+2 Y=5. F=VC2", "FVC2~ X? Y5.");
    row("Okuma: the head of a file", OM, "$PART.MIN%\nX1.", "X1.");
    row("Okuma lathe: the six figures of T", OL, "T010101\nX50 Z2", "tool T010101 X50 Z2");
    row("Okuma lathe: shape and the cycle over it", OL,
        "G0 X48 Z2\nG85 NLAP1 D3 U0.4 W0.1 F0.28\nNLAP1 G81\nG0 X18\nG80", "G0 F0.28 X? Z?");
    row("Okuma lathe: incremental", OL, "G90 X50 Z2\nG91 X-2 Z-5", "G91 X48 Z-3");
}
} // namespace

class ProgramStateTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void stateAtTheEnd_data();
    void stateAtTheEnd();
    void remarks_data();
    void remarks();
    void stateInASample_data();
    void stateInASample();
    void aLineIsReadLikeTheEditorCountsIt();
    void knowsTheLineBehindEveryWord();
    void showsAllThatIsSaid();
    void endsWhenCancelled();
};

void ProgramStateTest::stateAtTheEnd_data()
{
    QTest::addColumn<Control>("control");
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QByteArray>("state");
    const auto row = addRow;
    row("nothing", FM, "", "");
    row("modal codes", FM, "G21G17G40G49G80G90G94G98\nG64 G54", "G21 G17 G90 G94 G98 G64 G54 G40 G49");
    row("lower case, no blanks, block numbers", FM, "n10g1x10.y-5.z.5f200", "G1 F200 X10. Y-5. Z.5");
    row("blanks inside words, tabs", FM, "G 1 X 10.\tY -5.", "G1 X10. Y-5.");
    row("codes with zeros keep how they are written", FM, "G01 G00\nM03 M08", "G00 M03 M08");
    row("comments say nothing", FM, "G1 (G0 X5.) X10. ; Y9.\n(G0 X7.\n", "G1 X10.");
    row("numbers stay as written", FM, "X10\nY+010.50\nZ-0", "X10 Y+010.50 Z-0");
    row("incremental words are added up", FM, "G90 X10. Y5 Z1.5\nG91 X2.25 Y3 Z-2.\nX-.25", "G91 X12.00 Y8 Z-0.5");
    row("a sum of mixed forms is not known", FM, "G90 X10. Y10\nG91 X5 Y5.", "G91 X? Y?");
    row("zero is zero in either form", FM, "G90 X0 Y5.\nG91 X2.5 Y0", "G91 X2.5 Y5.");
    row("incremental from nowhere", FM, "G91 X5.", "G91 X?");
    row("an absolute word is known again", FM, "G91 X5.\nG90 X7.", "G90 X7.");
    row("a sum too long to count", FM, "G90 X99999999.\nG91 X99999999.", "G91 X?");
    row("tool prepared and changed", FM, "T1\nM6\nT2", "tool T1 next T2");
    row("tool and change in one block, in any order", FM, "M06 T12", "tool T12");
    row("change without a tool", FM, "M6", "tool ");
    row("the changer moves the axes", FM, "X1.\nT1 M6 Z2.", "tool T1 X? Z?");
    row("the changer stops spindle and coolant", FM, "M3 M8\nT1 M6", "M8~ tool T1");
    row("another tool than the prepared one", FM, "T1\nT2 M6", "tool T2~");
    row("offsets written by the program", FM, "X1.\nG10 L2 P1 X5.", "X?");
    row("tool length and radius", FM, "G43 H7 Z50.\nG41 D17 X1.", "G41 G43 D17 H7 X1. Z50.");
    row("coolant off ends both kinds", FM, "M8\nM7\nM9", "M9");
    row("extended work offset", FM, "G54.1 P12", "G54.1 P12");
    row("another offset: other numbers for the place", FM, "G54 X1. Y2.\nG55\nX3.", "G55 X3. Y?");
    row("the same offset again", FM, "G54 X1.\nG54", "G54 X1.");
    row("dwell is no motion", FM, "G1 X5.\nG4 X2.\nG4 P500", "G1 X5.");
    row("reference point", FM, "G90 X5. Y5. Z5.\nG91 G28 Z0.", "G91 X5. Y5. Z@");
    row("machine coordinates", FM, "X5. Z5.\nG53 Z0", "X5. Z?");
    row("zero point by position", FM, "X5. Z5.\nG92 X0", "X? Z?");
    row("local zero point", FM, "X5.\nG52 X10. Y5.\nX1.", "G52 X10. Y5. X1.");
    row("local zero point taken back", FM, "G52 X10.\nG52 X0", "");
    row("turned coordinates", FM, "X5. Y5.\nG68 X0 Y0 R45.\nX1.\nG69\nY2.", "X? Y2.");
    row("an unknown code with axis words", FM, "X5. Y5.\nG187 X3.", "X? Y5.");
    row("an unknown M code moves nothing", FM, "G0 X5. M141", "G0 X5.");
    row("a corner is no axis word", FM, "G1 X5. ,C2. ,R1.", "G1 X5.");
    row("drilling back to the start", FM, "G90 G98 G0 X0. Y0. Z50.\nG81 X1. Z-5. R2. F100",
        "G90 G98 G0 cycle G81 R2. Z-5. F100 X1. Y0. Z50.");
    row("drilling back to the R level", FM, "G90 G99 G0 Z50.\nG83 X1. Z-5. R2. Q1.\nX9. Z-7.",
        "G90 G99 G0 cycle G83 Q1. R2. Z-7. X9. Z2.");
    row("incremental drilling, repeated", FM, "G90 G99 G0 X1. Y1. Z50.\nG91 G81 X10. Z-8. R-48. K3",
        "G91 G99 G0 cycle G81 R-48. Z-8. X31. Y1. Z2.");
    row("a motion code ends a cycle", FM, "G98 G0 X1. Z9.\nG81 Z-5. R2.\nG0 Z20.", "G98 G0 X1. Z20.");
    row("drilling along another axis", FM, "G18 G98 G0 X1. Y1. Z9.\nG81 X2. Y-5. R2.",
        "G18 G98 G0 cycle G81 R2. X? Y? Z?");
    row("cycle without a return level", FM, "G0 X1. Z9.\nG81 X2. Z-5. R2.", "G0 cycle G81 R2. Z-5. X2. Z?");
    row("five axes, tip held in place", FM, "G0 B-30. C45.\nG43.4 H5 X1. Z9.", "G43.4 G0 H5 X1. Z9. B-30. C45.");
    row("values worked out by the control", FM, "G1 X#1 Y[#2+1] Z-#3 F#4", "G1 F#4~ X? Y? Z?");
    row("block skip", FM, "G1 X1.\n/G0 X2. M8", "G0~ M8~ X?");
    row("what stands before a call is not sure", FM, "G90 G0 X1. S500 M3\nM98 P10\nF200 Y2.",
        "G90~ G0~ M3~ F200 S500~ X? Y2.");
    row("a loop's end", FM, "F1.\nWHILE[#1LT5]DO1\nF2.\nEND1\nX3.", "F2.~ X3.");
    row("what a jump lands on", FM, "IF[#1EQ1]GOTO 20\nG90 X1.\nN20 Y2.\nF5.", "G90~ F5. X? Y2.");
    row("after the end, a subprogram", FM, "G90 X1. F5.\nM30\nO2 (HOLES)\nY2.", "Y2.");
    addLathesAndOkumas();
}

void ProgramStateTest::stateAtTheEnd()
{
    QFETCH(Control, control);
    QFETCH(QByteArray, program);
    QTEST(inWords(stateAtEnd(program, control)), "state");
}

void ProgramStateTest::remarks_data()
{
    QTest::addColumn<Control>("control");
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QByteArray>("remarks");
    const auto row = [](const char* name, Control control, const char* program, const char* remarks) {
        QTest::newRow(name) << control << QByteArray(program) << QByteArray(remarks);
    };
    row("all understood", FM, "%\nO1 (X)\nN1 G0 X1. I2. K3. ,R1.\n%", "");
    row("codes and letters", FM, "G5.1 Q1\nM88\nX1 Y\nX1.2.3\nG0 ?",
        "1: not understood G5.1, 2: not understood M88, 3: not understood Y, 4: not understood X1.2.3, "
        "5: not understood ?");
    row("the same once", FM, "M88\nM88", "1: not understood M88");
    row("calls", FM, "M98 P2001\nG65 P9010 A1.", "1: call M98 P2001, 2: call G65 P9010");
    row("variables and jumps", FM, "#1=5\nIF [#1 EQ 2] GOTO 9\nX#1",
        "1: variable #1=5, 2: jump IF GOTO 9, 3: variable X#1");
    row("block skip", FM, "/2 G0\n/G1", "1: skip /");
    row("the control's memory and zero point", FM, "G10 L2 P1 X5.\nG92 X0 Y0\nG68 R5.",
        "1: stores G10, 2: zero G92 X0 Y0, 3: transform G68");
    row("G43 is no word of an Okuma", OM, "G43 H1", "1: not understood G43");
    row("other code system", FL, "G91\nG90", "1: not understood G91, 2: not understood G90");
    row("Okuma's names", OM, "NLAP1 G0\nVC1=5\nMODIN O10\nIF [VC1 EQ 1] N9\nSB=400",
        "2: variable VC1=5, 3: call MODIN O10, 4: jump IF 9, 5: not understood SB");
    row("another program", FM, "M30\n%\nO77", "3: another program O77");
}

void ProgramStateTest::remarks()
{
    QFETCH(Control, control);
    QFETCH(QByteArray, program);
    QTEST(remarksInWords(stateAtEnd(program, control)), "remarks");
}

void ProgramStateTest::stateInASample_data()
{
    QTest::addColumn<Control>("control");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("state");
    const auto row = [](Control control, const char* file, const char* line, const char* state) {
        QTest::addRow("%s %s", file, line)
            << control << QString::fromLatin1(file) << QByteArray(line) << QByteArray(state);
    };
    row(FM, "O1200-drilling.nc", "N190",
        "G21 G17 G90 G99 G54 G40 G43 G0 M3 M8 cycle G83 Q4. R3. Z-24. tool T4 F240 "
        "S1900 H4 X80. Y20. Z3.");
    row(FL, "O2200-shaft.nc", "N200", "G21 G18 G99 G40 G96 G0 M3 M9 tool T0303 F0.28 S180 G50 S2800 X? Z?");
    row(FL, "O2200-shaft.nc", "N300",
        "G21 G18 G99 G40 G97 G0 M3 M8 cycle G92 X28.1 Z-36. tool T0505 F2. S900 "
        "G50 S2800 X34. Z6.");
    row(FM, "O3200-pockets-with-subprogram.nc", "N90",
        "G21~ G17~ G90 G54~ G40~ G43~ G0 M3~ M8~ tool T6~ S3600~ H6~ X85. Y60. Z?");
    row(FM, "O4200-incremental-pocket.nc", "N220",
        "G21 G17 G91 G94 G55 G40 G43 G1 M3 M8 tool T2 F480 S2200 H2 X52. Y25. Z-6.");
    row(FM, "O5200-five-axis.nc", "N130",
        "G21 G17 G90 G94 G54.1 P2 G40 G43.4 G1 M3 M8 tool T11 F2400 S9000 H11 "
        "X27.694 Y-13.549 Z7.332 B-29.709 C49.468");
    row(OL, "shaft.min", "N30", "G96 G0 M3 M8 tool T030303 F0.28 S240 G50 S2500 X400 Z300");
}

void ProgramStateTest::stateInASample()
{
    QFETCH(Control, control);
    QFETCH(QString, file);
    QFETCH(QByteArray, line);
    const QByteArray program = sample(file);
    QTEST(inWords(stateAbove(lineOf(program, line), program, control)), "state");
}

void ProgramStateTest::aLineIsReadLikeTheEditorCountsIt()
{
    const QByteArray program = "G0 X1.\rX2.\r\nX3.\nX4.";
    QCOMPARE(stateAbove(1, program).axis('X').status, AxisPosition::Status::Unsaid);
    QCOMPARE(stateAbove(3, program).axis('X').text, "2.");
    QCOMPARE(stateAbove(4, program).axis('X').text, "3.");
    QCOMPARE(stateAtEnd(program).axis('X').text, "4.");
}

void ProgramStateTest::knowsTheLineBehindEveryWord()
{
    const ProgramState state = stateAtEnd("G90\nG0 X1. F5.\n\nT3\nM6\nG91 Z1.\nG54 S9");
    QCOMPARE(state.line, 8);
    QCOMPARE(state.in(ModalGroup::Distance).line, 6);
    QCOMPARE(state.in(ModalGroup::Motion).line, 2);
    QCOMPARE(state.feed.line, 2);
    QCOMPARE(state.tool.line, 5);
    QCOMPARE(state.speed.line, 7);
    QCOMPARE(state.axis('X').line, 5); // the tool change moved it
    QCOMPARE(state.axis('X').cause, "M6");
}

void ProgramStateTest::showsAllThatIsSaid()
{
    QStringList shown;
    const auto state = stateAtEnd("G54 G90\nM6\nG99 G81 X1. Z-5. R2. F#1\nG28 Y0\nG53 B5.");
    for (const StateRow& row : stateRows(state))
        shown.append(QStringLiteral("%1: %2 %3%4").arg(row.name, row.text).arg(row.line).arg(row.isSure ? "" : "~"));
    QCOMPARE(shown, (QStringList{"Distance mode: G90 1", "Return level: G99 3", "Work offset: G54 1",
                                 "Cycle: G81 R2. Z-5. 3", "Tool: not said 2", "Feed: F#1 3~", "X: X1. 3",
                                 "Y: at the reference point (G28) 4~", "Z: Z2. 3", "B: not known (G53) 5~"}));
}

void ProgramStateTest::endsWhenCancelled()
{
    const std::atomic<bool> cancelled = true;
    QVERIFY(!StateReader::above(1'000'000, QByteArray("X1.\n").repeated(100'000), FM, &cancelled));
}

QTEST_APPLESS_MAIN(ProgramStateTest)
#include "program_state.moc"
