// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

#include <QRandomGenerator>

#include <functional>

namespace
{
const QByteArray leader(20, '\0');
const QByteArray program("G0\nG1\nG2\nG3\n");
const QByteArray onTheLine("%G0\r\nG1\r\nG2\r\nG3\r\n");
using Step = std::function<void(TransferRig&)>;
} // namespace

/// Stop and continue: whatever the moment, the control gets every byte once, from the line that the operator chose.
class StoppingTest : public QObject
{
    Q_OBJECT

    static QPoint place(const TransferRig& rig, int line, int column)
    {
        const auto position = rig.editor->positionFromLineIndex(line, column);
        const auto x = rig.editor->SendScintilla(QsciScintilla::SCI_POINTXFROMPOSITION, 0UL, position);
        const auto y = rig.editor->SendScintilla(QsciScintilla::SCI_POINTYFROMPOSITION, 0UL, position);
        return {static_cast<int>(x), static_cast<int>(y) + 3};
    }

private Q_SLOTS:
    void stopBeforeAnyByteOfAWriteWasTaken_data()
    {
        QTest::addColumn<int>("taken");
        QTest::newRow("header") << 0;
        for (int line = 1; line <= 4; ++line)
            QTest::addRow("line %d", line) << line;
        QTest::newRow("trailer") << 5;
    }

    void stopBeforeAnyByteOfAWriteWasTaken()
    {
        QFETCH(int, taken);
        TransferRig rig;
        rig.machine->MCMODE = "FANUC";
        rig.startWith(program);
        rig.sendUntilHeld(taken);
        for (int stops = 0; stops < 3; ++stops) { // the same rest is cut off again and again
            rig.click("btnStop");
            QVERIFY(rig.isShown("cbo1") && !rig.isShown("btnStop"));
            QCOMPARE(rig.chosenStart(), 1);
            if (stops < 2) rig.click("btnSend");
        }
        QCOMPARE(rig.machine->activity, TransferActivity::Stopped);
        for (int line = 0; line < rig.editor->lines(); ++line)
            QCOMPARE(rig.editor->markersAtLine(line), 0U);
        rig.releaseLine();
        const QByteArray before = rig.pty.read();
        rig.click("btnSend");
        QCOMPARE(before + rig.readUntilIdle(), leader + "%\r\n" + onTheLine.mid(1) + "%\r\n");
        QCOMPARE(rig.chosenStart(), 0); // the next send is whole again
        QCOMPARE(rig.editor->caret(), rig.editor->textSize());
    }

    void slipsOnStopHarmNothing_data()
    {
        QTest::addColumn<bool>("byKeyboard");
        QTest::newRow("double click") << false;
        QTest::newRow("space bar") << true;
    }

    void slipsOnStopHarmNothing()
    {
        QFETCH(bool, byKeyboard);
        TransferRig rig;
        rig.startWith(program);
        rig.sendUntilHeld(3);
        if (byKeyboard) {
            QVERIFY(rig.find<QWidget>("btnStop")->hasFocus()); // the focus was on Send
            QTest::keyClick(rig.view->windowHandle(), Qt::Key_Space);
            QVERIFY(rig.find<QWidget>("cbo1")->hasFocus());
            QTest::keyClick(rig.view->windowHandle(), Qt::Key_Return);
        } else {
            // To the window: whatever appears in the button's place gets the second click.
            const auto* stop = rig.find<QWidget>("btnStop");
            QTest::mouseDClick(rig.view->windowHandle(), Qt::LeftButton, {},
                               stop->mapTo(rig.view.get(), stop->rect().center()));
        }
        QVERIFY(!rig.view->dncRunning());
        QCOMPARE(rig.chosenStart(), 1);
    }

    void randomStops_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::newRow("no framing") << "NONE";
        QTest::newRow("Okuma") << "OKUMA";
    }

    void randomStops()
    {
        QFETCH(QString, mode);
        QRandomGenerator random(77);
        QByteArray text;
        for (int line = 0; line < 200; ++line)
            text += "N" + QByteArray::number(line) +
                    QByteArray(random.bounded(200), static_cast<char>('A' + line % 26)) + '\n';
        TransferRig rig;
        rig.machine->MCMODE = mode;
        rig.machine->MCTXEOB = "LF";
        rig.start();
        rig.editor->setUpdatesEnabled(false); // painting long lines would be most of the work
        rig.open(text);
        rig.click("btnSend");
        QByteArray got;
        int stops = 0;
        int halfLines = 0;
        while (rig.view->dncRunning() && stops < 100) {
            // The control reads in bursts, so that stops happen on an empty, a filling and a full line.
            if (random.bounded(8) == 0) got += rig.pty.read();
            QTest::qWait(static_cast<int>(random.bounded(30)));
            if (!rig.view->dncRunning()) break;
            rig.click("btnStop");
            if (random.bounded(4) == 0) {
                got += rig.pty.read();
                halfLines += !got.endsWith('\n');
            }
            rig.click("btnSend");
            ++stops;
        }
        got += rig.readUntilIdle();
        const QByteArray expected = mode == "NONE" ? text
                                                   : leader + QByteArray("\x12\0", 2) + leader + text + leader +
                                                         QByteArray("\x14\0\0\0\0\0", 6);
        qInfo("%d stops, %d of them seen with a line under way", stops, halfLines);
        QCOMPARE(got.size(), expected.size());
        QVERIFY(got == expected);
        QVERIFY(stops > 20 && halfLines > 0);
    }

    void operatorChoosesTheLine_data()
    {
        QTest::addColumn<Step>("step");
        QTest::addColumn<QByteArray>("continued");
        const auto row = [](const char* name, const QByteArray& continued, const Step& step) {
            QTest::newRow(name) << step << continued;
        };
        row("nothing touched", "G2\r\nG3\r\n", [](TransferRig&) {});
        row("there and back", "G3\r\n", [](TransferRig& rig) {
            QTest::keyClick(rig.editor, Qt::Key_Up);
            QTest::keyClick(rig.editor, Qt::Key_Down);
        });
        row("click inside a line", "G1\r\nG2\r\nG3\r\n",
            [](TransferRig& rig) { QTest::mouseClick(rig.editor->viewport(), Qt::LeftButton, {}, place(rig, 1, 1)); });
        row("caret moved without a key", "G1\r\nG2\r\nG3\r\n",
            [](TransferRig& rig) { rig.editor->setCursorPosition(1, 0); });
        row("all selected by the context menu", onTheLine, [](TransferRig& rig) {
            rig.editor->selectAll();
            QCOMPARE(rig.headline(), QString("Ready to send")); // no more "continues there"
            rig.chooseStart(0);
        });
        row("context menu asked for", "G2\r\nG3\r\n",
            [](TransferRig& rig) { QTest::mouseClick(rig.editor->viewport(), Qt::RightButton, {}, place(rig, 0, 1)); });
        row("pasted", "X\r\nG3\r\n", [](TransferRig& rig) {
            rig.click("btnLock");
            rig.editor->insert("X\n");
        });
        row("rewound", onTheLine, [](TransferRig& rig) { rig.click("btnRewind"); });
        row("top chosen", onTheLine, [](TransferRig& rig) { rig.chooseStart(0); });
        row("another file", "M30", [](TransferRig& rig) {
            rig.open("M30");
            rig.chooseStart(1);
        });
    }

    void operatorChoosesTheLine()
    {
        QFETCH(Step, step);
        TransferRig rig;
        rig.machine->MCTXSOT = "37";
        rig.startWith(program);
        rig.sendUntilHeld(3); // the start string, G0 and G1 are on the line, G2 is cut off
        rig.click("btnStop");
        QCOMPARE(rig.editor->caret(), 9); // where the next line begins
        rig.releaseLine();
        QCOMPARE(rig.pty.readAtLeast(9), QByteArray("%G0\r\nG1\r\n"));
        step(rig);
        if (QTest::currentTestFailed()) return;
        rig.click("btnSend");
        QTEST(rig.readUntilIdle(), "continued");
    }

    void reboundViewSendsNothingMore()
    {
        TransferRig rig;
        rig.startWith(program);
        rig.sendUntilHeld(2);
        rig.pty.read();
        rig.view->initialize(true, 1);
        QVERIFY(!rig.view->dncRunning());
        rig.releaseLine();
        QCOMPARE(rig.readAll(), QByteArray("G1\r\n")); // what the stop cut off, and no line after it
    }

    void editorIgnoresTheOperatorDuringATransfer()
    {
        TransferRig rig;
        rig.machine->MCTXSOT = "37";
        rig.startWith(program);
        rig.sendUntilHeld(3);
        QTRY_VERIFY(rig.editor->markersAtLine(2) != 0); // the line going out
        QVERIFY(!rig.editor->hasSelectedText());        // other programs keep what is selected in them
        for (int lock = 0; lock < 2; ++lock) {          // unlocking takes effect only at the end
            QTest::mouseClick(rig.editor->viewport(), Qt::LeftButton, {}, place(rig, 0, 1));
            QTest::keyClick(rig.editor, Qt::Key_Home, Qt::ControlModifier);
            QTest::keyClicks(rig.editor, "X");
            QTest::keyClick(rig.editor, Qt::Key_Delete);
            QTest::keyClick(rig.editor, Qt::Key_V, Qt::ControlModifier);
            QTest::keyClick(rig.editor, Qt::Key_Z, Qt::ControlModifier);
            QTest::keyClick(rig.editor, Qt::Key_A, Qt::ControlModifier);
            QCOMPARE(rig.editor->wholeText(), program);
            QVERIFY(!rig.find<QWidget>("btnFolder")->isEnabled());
            rig.click("btnLock");
        }
        QCOMPARE(rig.text("txtPCent"), QStringLiteral("50%"));
        QCOMPARE(rig.find<QWidget>("boxPBInner")->width(), rig.find<QWidget>("boxPBOuter")->width() / 2);
        QVERIFY(!rig.machine->hidden && rig.machine->value / rig.machine->maximum == 0.5);
        QVERIFY(rig.isShown("btnStop") && !rig.isShown("btnSend") && !rig.isShown("cbo1"));
        rig.releaseLine();
        QCOMPARE(rig.readUntilIdle(), onTheLine);
    }
};

QTEST_MAIN(StoppingTest)
#include "transfer_stopping.moc"
