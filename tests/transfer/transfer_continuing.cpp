// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

namespace
{
const QByteArray program("G0\nG1\nG2\nG3\n");
const QByteArray onTheLine("G0\r\nG1\r\nG2\r\nG3\r\n");
constexpr int thirdLine = 6;
} // namespace

/// The place in the program: who chooses the line that goes out next.
class ContinuingTest : public QObject
{
    Q_OBJECT

    // Starts a send that is held with "G0" and "G1" on the line and "G2" cut off.
    static void sendUntilHeld(TransferRig& rig)
    {
        rig.start();
        rig.open(program);
        rig.holdLineAfter(3); // start string, G0, G1
        rig.click("btnSend");
        QTRY_VERIFY(rig.isHeld());
        QTRY_COMPARE(rig.view->iIndexCurrentLine, thirdLine);
    }

    static QPoint place(const TransferRig& rig, int line, int column)
    {
        const auto position = rig.editor->positionFromLineIndex(line, column);
        const auto x = rig.editor->SendScintilla(QsciScintilla::SCI_POINTXFROMPOSITION, 0UL, position);
        const auto y = rig.editor->SendScintilla(QsciScintilla::SCI_POINTYFROMPOSITION, 0UL, position);
        return {static_cast<int>(x), static_cast<int>(y) + 3};
    }

private Q_SLOTS:
    void operatorsHandsOffTheEditorDuringATransfer();
    void movedCaretChoosesTheLineAndForgetsTheRest_data();
    void movedCaretChoosesTheLineAndForgetsTheRest();
    void editedTextForgetsTheRest();
    void caretInsideALineSendsTheWholeLine();
    void rewindStartsAnew();
    void anotherFileStartsAnew();
    void topInTheSelectorStartsAnew();
    void continuedSendHasNoHeaderOfItsOwn();
    void lineGoingOutIsMarkedUntilTheStop();
};

void ContinuingTest::operatorsHandsOffTheEditorDuringATransfer()
{
    TransferRig rig;
    sendUntilHeld(rig);
    const QByteArray text = rig.editor->wholeText();
    QTest::mouseClick(rig.editor->viewport(), Qt::LeftButton, {}, place(rig, 0, 1));
    QTest::mouseDClick(rig.editor->viewport(), Qt::LeftButton, {}, place(rig, 0, 1));
    QTest::keyClick(rig.editor, Qt::Key_Home, Qt::ControlModifier);
    QTest::keyClicks(rig.editor, "X");
    QTest::keyClick(rig.editor, Qt::Key_Delete);
    QTest::keyClick(rig.editor, Qt::Key_V, Qt::ControlModifier);
    QTest::keyClick(rig.editor, Qt::Key_Z, Qt::ControlModifier);
    QTest::keyClick(rig.editor, Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(rig.editor->wholeText(), text);
    QVERIFY(!rig.view->findChild<QWidget*>("btnFolder")->isEnabled());
    rig.click("btnLock"); // may be unlocked, but not before the end
    rig.click("btnLock");
    QTest::keyClicks(rig.editor, "X");
    QCOMPARE(rig.editor->wholeText(), text);
    rig.releaseLine();
    QCOMPARE(rig.readUntilIdle(), onTheLine);
}

void ContinuingTest::movedCaretChoosesTheLineAndForgetsTheRest_data()
{
    using Move = std::function<void(TransferRig&)>;
    QTest::addColumn<Move>("move");
    QTest::addColumn<QByteArray>("continued");
    const auto row = [](const char* name, const QByteArray& continued, const Move& move) {
        QTest::newRow(name) << move << continued;
    };
    row("not at all", "G2\r\nG3\r\n", [](TransferRig&) {});
    row("key", "G3\r\n", [](TransferRig& rig) { QTest::keyClick(rig.editor, Qt::Key_End, Qt::ShiftModifier); });
    row("key to another line", "G1\r\nG2\r\nG3\r\n", [](TransferRig& rig) {
        QTest::keyClick(rig.editor, Qt::Key_Up);
        QTest::keyClick(rig.editor, Qt::Key_Up);
    });
    row("there and back", "G3\r\n", [](TransferRig& rig) {
        QTest::keyClick(rig.editor, Qt::Key_Up);
        QTest::keyClick(rig.editor, Qt::Key_Down);
    });
    row("click", "G0\r\nG1\r\nG2\r\nG3\r\n",
        [](TransferRig& rig) { QTest::mouseClick(rig.editor->viewport(), Qt::LeftButton, {}, place(rig, 0, 1)); });
    row("drag from the caret", "G1\r\nG2\r\nG3\r\n", [](TransferRig& rig) {
        QTest::mousePress(rig.editor->viewport(), Qt::LeftButton, {}, place(rig, 3, 0));
        QTest::mouseMove(rig.editor->viewport(), place(rig, 2, 0));
        QTest::mouseMove(rig.editor->viewport(), place(rig, 1, 1));
        QTest::mouseRelease(rig.editor->viewport(), Qt::LeftButton, {}, place(rig, 1, 1));
    });
    row("select all of the context menu", onTheLine, // leaves the caret at the top
        [](TransferRig& rig) {
            rig.editor->selectAll();
            QCOMPARE(rig.text("lblTransferState"), QString("Ready to send")); // no more "continues there"
        });
    row("go to line", "G1\r\nG2\r\nG3\r\n", [](TransferRig& rig) { rig.editor->setCursorPosition(1, 0); });
}

void ContinuingTest::movedCaretChoosesTheLineAndForgetsTheRest()
{
    using Move = std::function<void(TransferRig&)>;
    QFETCH(Move, move);
    TransferRig rig;
    sendUntilHeld(rig);
    rig.click("btnStop");
    rig.releaseLine();
    QCOMPARE(rig.pty.readAtLeast(8), QByteArray("G0\r\nG1\r\n"));
    move(rig);
    rig.click("btnSend");
    QTEST(rig.readUntilIdle(), "continued");
}

void ContinuingTest::editedTextForgetsTheRest()
{
    TransferRig rig;
    sendUntilHeld(rig);
    rig.click("btnStop");
    rig.releaseLine();
    QCOMPARE(rig.pty.readAtLeast(8), QByteArray("G0\r\nG1\r\n"));
    rig.click("btnLock");
    rig.editor->insert("X\n"); // before the caret's line; as the context menu's Paste it comes by no key
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), QByteArray("X\r\nG3\r\n"));
}

void ContinuingTest::caretInsideALineSendsTheWholeLine()
{
    TransferRig rig;
    rig.start();
    rig.open(program);
    QTest::mouseClick(rig.editor->viewport(), Qt::LeftButton, {}, place(rig, 2, 1));
    rig.chooseStart(1);
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), QByteArray("G2\r\nG3\r\n"));
}

void ContinuingTest::rewindStartsAnew()
{
    TransferRig rig;
    sendUntilHeld(rig);
    rig.click("btnStop");
    rig.releaseLine();
    QCOMPARE(rig.pty.readAtLeast(8), QByteArray("G0\r\nG1\r\n"));
    rig.click("btnRewind");
    QCOMPARE(rig.editor->caret(), 0);
    QVERIFY(!rig.isShown("boxPBOuter") && rig.machine->hidden);
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), onTheLine);
}

void ContinuingTest::anotherFileStartsAnew()
{
    TransferRig rig;
    sendUntilHeld(rig);
    rig.click("btnStop");
    rig.releaseLine();
    QCOMPARE(rig.pty.readAtLeast(8), QByteArray("G0\r\nG1\r\n"));
    rig.open("M30");
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), QByteArray("M30"));
    rig.chooseStart(1); // no rest of the old program is left behind it
    rig.editor->moveCaretTo(0);
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), QByteArray("M30"));
}

void ContinuingTest::topInTheSelectorStartsAnew()
{
    TransferRig rig;
    rig.machine->MCTXSOT = "37";
    sendUntilHeld(rig);
    rig.click("btnStop");
    rig.releaseLine();
    QCOMPARE(rig.pty.readAtLeast(9), QByteArray("%G0\r\nG1\r\n"));
    rig.chooseStart(0);
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), "%" + onTheLine);
}

void ContinuingTest::continuedSendHasNoHeaderOfItsOwn()
{
    TransferRig rig;
    rig.machine->MCMODE = "FANUC";
    rig.start();
    rig.open(program);
    rig.editor->moveCaretTo(thirdLine);
    rig.chooseStart(1);
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), QByteArray("G2\r\nG3\r\n%\r\n"));
    QCOMPARE(rig.editor->caret(), rig.editor->textSize());
}

void ContinuingTest::lineGoingOutIsMarkedUntilTheStop()
{
    TransferRig rig;
    sendUntilHeld(rig);
    QTRY_VERIFY(rig.editor->markersAtLine(2) != 0);
    QCOMPARE(rig.editor->selectedText(), QStringLiteral("G2\n"));
    rig.click("btnStop");
    for (int line = 0; line < 4; ++line)
        QCOMPARE(rig.editor->markersAtLine(line), 0U);
    QCOMPARE(rig.editor->selectedText(), QString());
    QCOMPARE(rig.editor->caret(), 9); // where the next line begins
}

QTEST_MAIN(ContinuingTest)
#include "transfer_continuing.moc"
