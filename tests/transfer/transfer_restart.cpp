// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/TransferEntry.h"
#include "simulator/SimulatedControl.h"
#include "support/Relay.h"
#include "transfer/RestartPage.h"
#include "transfer/StartBlockTable.h"
#include "transfer/TransferRig.h"

#include <QAction>
#include <QPushButton>
#include <QSpinBox>

#include <fcntl.h>
#include <termios.h>

namespace
{
const QByteArray leader(20, '\0');
const QByteArray program("O1234\nG21 G90 G54\nT1 M6\nS3000 M3\nG0 X0. Y0.\nG43 H1 Z50.\nG1 Z-1. F200\n"
                         "X10.\nY10.\nM30\n");
constexpr int startLine = 9; // "Y10."
const QByteArray rest("Y10.\r\nM30\r\n");

// A machine with the program and its page open.
struct PageRig : TransferRig {
    explicit PageRig(const QByteArray& bytes = program, int line = startLine)
    {
        machine->MCMODE = "FANUC";
        startWith(bytes);
        openPage(line);
    }

    void openPage(int line)
    {
        editor->moveCaretTo(editor->lineNumbered(line).start);
        find<QAction>("actRestart")->trigger();
        page = find<RestartPage>("RestartPage");
        require(page, "no page");
        table = find<StartBlockTable>("tblBlocks");
        requireSoon([this] { return !text("lblPlan").startsWith("Reading"); }, "the program is not read");
    }
    void type(int row, const QString& block) { table->item(row, 0)->setText(block); }
    QByteArray blocks() const { return table->blocks().join(QString()).replace('\n', "\r\n").toUtf8(); }

    QPointer<RestartPage> page;
    StartBlockTable* table = nullptr;
};

// The control at the other end of the line.
struct FanucControl {
    explicit FanucControl(const PtyPair& line)
        : device(::open(control.devicePath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)),
          relay({line.master(), line.master()}, {device, device}, {})
    {
        termios raw{};
        ::tcgetattr(device, &raw);
        ::cfmakeraw(&raw);
        ::tcsetattr(device, TCSANOW, &raw);
    }
    ~FanucControl() { ::close(device); }
    static cncsim::Settings settings()
    {
        cncsim::Settings made;
        made.framing.type = cncsim::ControlKind::Fanuc;
        return made;
    }

    cncsim::SimulatedControl control{settings()};
    int device;
    Relay relay;
};
} // namespace

/// A start in the middle of a program: the control gets what the page shows, and nothing else.
class RestartTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void blocksOfTheLineBeforeAreNotSent()
    {
        PageRig rig;
        auto* send = rig.find<QPushButton>("btnSendRestart");
        QVERIFY(send->isEnabled());
        auto* line = rig.find<QSpinBox>("spnLine");
        line->setValue(line->value() - 1);
        rig.table->addBlock(); // as quick as a key, before the program is read again
        QCOMPARE(rig.blocks(), QByteArray());
        QVERIFY(!send->isEnabled());
        QTRY_VERIFY(send->isEnabled());
        QVERIFY(!rig.blocks().isEmpty());
    }

    void controlGetsHeaderShownBlocksRestAndTrailer()
    {
        QList<TransferEntry> reported;
        QObject observer;
        NotificationCenter::defaultCenter().addObserver(
            &observer, Notifications::transferRecorded_Event, nullptr, [&](const Notification& notification) {
                reported << notification.userInfo.value(Notifications::transferEntry).value<TransferEntry>();
            });
        PageRig rig;
        FanucControl control(rig.pty);
        QVERIFY(rig.blocks().contains("T1 M6\r\n"));
        QVERIFY(rig.blocks().contains("X10. Y0.\r\n"));
        const int rows = rig.table->rowCount();
        rig.type(0, "G20\u2028 (typed)"); // a line separator would look like nothing and leave as "?"
        rig.type(rows - 1, "");           // taken out
        const QByteArray shown = rig.blocks();
        QVERIFY(shown.startsWith("G20 (typed)\r\n"));
        QCOMPARE(shown.count('\n'), rows - 1);
        rig.click("btnSendRestart");
        QTRY_VERIFY(!rig.view->dncRunning());
        QVERIFY(control.control.waitComplete(60'000));
        QCOMPARE(QByteArray::fromStdString(control.control.report().received),
                 leader + "%\r\n" + shown + rest + "%\r\n");
        QCOMPARE(control.control.report().problem, std::string());
        QVERIFY(rig.details().contains("Restart from line 9"));
        QTRY_VERIFY(!rig.page);
        QCOMPARE(rig.editor->wholeText(), program);
        QCOMPARE(reported.size(), 1);
        QCOMPARE(reported[0].fromLine, startLine);
        QVERIFY(reported[0].isRestart);
        QCOMPARE(reported[0].count, 2);
    }

    void stoppedAnywhereItContinuesExactly()
    {
        const QByteArray whole = leader + "%\r\n" + PageRig().blocks() + rest + "%\r\n";
        for (int writes = 0; writes < whole.count('\n'); ++writes) { // the header being the first
            PageRig rig;
            rig.holdLineAfter(writes);
            rig.click("btnSendRestart");
            QTRY_VERIFY(rig.isHeld && rig.completions == writes);
            QTest::qWait(0);
            QVERIFY(rig.details().contains("Restart from line 9"));
            rig.click("btnStop");
            QVERIFY(rig.details().contains("Restart from line 9"));
            rig.releaseLine();
            const QByteArray before = rig.pty.read();
            QVERIFY(before.size() < whole.size());
            rig.click("btnSend");
            QCOMPARE(before + rig.readUntilIdle(), whole);
        }
    }

    // Without the rest of its start blocks the line must not go out by a plain Send.
    void startBlocksGivenUpLeadToTheTop()
    {
        PageRig rig;
        rig.holdLineAfter(2);
        rig.click("btnSendRestart");
        QTRY_VERIFY(rig.isHeld);
        QTest::qWait(0);
        rig.click("btnStop");
        QCOMPARE(rig.chosenStart(), 1);
        QTest::keyClick(rig.editor, Qt::Key_Up);
        QCOMPARE(rig.chosenStart(), 0);
    }

    void cancelChangesNothing()
    {
        PageRig rig;
        const auto caret = rig.editor->caret();
        rig.type(0, "M0");
        rig.click("btnCancelRestart");
        QTRY_VERIFY(!rig.page);
        QCOMPARE(rig.editor->caret(), caret);
        QCOMPARE(rig.chosenStart(), 0);
        QCOMPARE(rig.editor->wholeText(), program);
        rig.click("btnSend");
        QCOMPARE(rig.readUntilIdle().count("M0"), 0);
    }

    void typedBlockIsMarkedByWhatItMoves_data()
    {
        QTest::addColumn<QString>("block");
        QTest::addColumn<QString>("moves");
        QTest::newRow("nothing") << "M8 S500 F100 (X5)"
                                 << "";
        QTest::newRow("an axis") << "g0z50."
                                 << "Moves axes";
        QTest::newRow("an arc without a position") << "G2 I5."
                                                   << "Moves axes";
        QTest::newRow("to the reference point") << "G28"
                                                << "Moves axes";
        QTest::newRow("tool length") << "G43 H1"
                                     << "Moves axes";
        QTest::newRow("a call") << "CALL O10"
                                << "Moves axes";
        QTest::newRow("tool change") << "T5 M06"
                                     << "Changes the tool";
    }

    void typedBlockIsMarkedByWhatItMoves()
    {
        QFETCH(QString, block);
        PageRig rig;
        rig.type(0, block);
        QTEST(rig.table->item(0, 1)->text(), "moves");
    }

    void noStartWhereTheStateCannotBeBroughtBack()
    {
        PageRig rig("O1\nG90 G0 X0. Y0. Z5.\nG68 X0. Y0. R30.\nG1 X10. F100\nG69\nM30\n", 5);
        auto* send = rig.find<QAbstractButton>("btnSendRestart");
        QVERIFY(!send->isEnabled());
        rig.click("btnClearLine");
        QTRY_VERIFY(send->isEnabled());
        QVERIFY(rig.text("lblPlan").contains("from line 3"));
    }

    void isOfferedOnlyWhereItCanBeSent()
    {
        PageRig rig;
        rig.editor->clearProgram(); // another text: what the page shows is not of it
        QTRY_VERIFY(!rig.page);
        rig.open(program);
        const auto* action = rig.find<QAction>("actRestart");
        QVERIFY(action->isVisible());
        rig.sendUntilHeld(1);
        QVERIFY(!action->isVisible());
        rig.click("btnStop");
        rig.machine->MCFLOW = 3;
        rig.view->machineChanged();
        QVERIFY(!action->isVisible());
    }
};

QTEST_MAIN(RestartTest)
#include "transfer_restart.moc"
