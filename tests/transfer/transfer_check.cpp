// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

#include <QToolButton>

#include <functional>

namespace
{
const QByteArray program("O1\nG0 X1. X2.\nG1 X5. F100\nG0 Z1 Z2\nM30\n");
} // namespace

/// The line that says what the control will stumble over, beside the program.
class CheckLineTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void findsWhatTheMachinesSettingsMakeOfAProgram_data()
    {
        using SetUp = std::function<void(RigMachine&)>;
        QTest::addColumn<SetUp>("setUp");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("says");
        const auto row = [](const char* name, const SetUp& setUp, const QByteArray& text, const char* says) {
            QTest::newRow(name) << setUp << text << QString(says);
        };
        const SetUp fanuc = [](RigMachine& machine) { machine.MCMODE = "fanuc"; };
        row("Fanuc, nothing", fanuc, "%\nO1\nM30\n%\n", "Check: no findings");
        row("Fanuc, no number", fanuc, "G0\nM30\n",
            "1 thing to look at. Warning: The program has no O number: the control may refuse it or store it under "
            "another.");
        row(
            "Okuma's end", [](RigMachine& machine) { machine.MCMODE = "Okuma"; }, "O1\nRTS\n", "Check: no findings");
        row(
            "a percent sign in the start string",
            [](RigMachine& machine) {
                machine.MCTXSOT = "37";
                machine.MCTXEOT = "37";
            },
            "%\nO1\nM30\n",
            "1 thing to look at. Warning, line 1: The machine's start string sends a % too: the control gets two.");
        row(
            "comments left out",
            [](RigMachine& machine) {
                machine.MCMODE = "FANUC";
                machine.MCSTRIPCOMMENTS = true;
            },
            "O1 (small)\nM30\n", "Check: no findings");
        row(
            "XModem sends nothing around the program",
            [](RigMachine& machine) {
                machine.MCMODE = "FANUC";
                machine.MCFLOW = 3;
            },
            "%\nG0\nM30\n%\n", "Check: no findings");
        row("no program", fanuc, "", "");
    }

    void findsWhatTheMachinesSettingsMakeOfAProgram()
    {
        QFETCH(std::function<void(RigMachine&)>, setUp);
        QFETCH(QByteArray, text);
        TransferRig rig;
        rig.start();
        rig.open("G0 X1 X2\n");
        QTRY_VERIFY(rig.text("lblCheck").contains("to look at")); // of the machine as it was
        rig.open(text);
        setUp(*rig.machine); // the settings may change while the view is open
        rig.view->machineChanged();
        QFETCH(QString, says);
        QTRY_COMPARE(rig.text("lblCheck"), says);
    }

    void goesToEachPlaceAndRound()
    {
        TransferRig rig;
        rig.machine->MCMODE = "FANUC";
        rig.startWith(program);
        QTRY_VERIFY(rig.text("lblCheck").startsWith("2 things to look at. Warning, line 2: "));
        const auto goesTo = [&](const char* button, const char* text, int line) {
            rig.click(button);
            QVERIFY2(rig.text("lblCheck").startsWith(text), qPrintable(rig.text("lblCheck")));
            QCOMPARE(rig.editor->lineNumber(rig.editor->shownPlace().start), line);
            QCOMPARE(rig.editor->caret(), 0); // where a send goes on stays as it was
        };
        goesTo("btnNextFinding", "1 of 2. Warning, line 2: ", 2);
        goesTo("btnNextFinding", "2 of 2. Warning, line 4: ", 4);
        goesTo("btnNextFinding", "1 of 2. ", 2);
        goesTo("btnPreviousFinding", "2 of 2. ", 4);

        rig.view->setTextLocked(false);
        rig.click("btnNextFinding");
        QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 2); // ready to be corrected
        rig.editor->setFocus();
        QTest::keyClicks(rig.editor, "(");
        QTRY_VERIFY(rig.text("lblCheck").contains("line 2: The comment is not closed"));
    }

    void keepsWhatItSaysDuringATransfer()
    {
        TransferRig rig;
        rig.machine->MCMODE = "FANUC";
        rig.startWith(program);
        QTRY_VERIFY(rig.text("lblCheck").startsWith("2 things"));
        const QString before = rig.text("lblCheck");
        rig.sendUntilHeld(3);
        rig.click("btnNextFinding"); // looks there without a change of what goes out
        QCOMPARE(rig.editor->lineNumber(rig.editor->shownPlace().start), 2);
        rig.click("btnPreviousFinding");
        rig.releaseLine();
        const QByteArray body("O1\r\nG0 X1. X2.\r\nG1 X5. F100\r\nG0 Z1 Z2\r\nM30\r\n");
        QCOMPARE(rig.readUntilIdle(), QByteArray(20, '\0') + "%\r\n" + body + "%\r\n");
        QVERIFY(rig.text("lblCheck").contains("line 4"));
    }
};

QTEST_MAIN(CheckLineTest)
#include "transfer_check.moc"
