// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

#include <QAccessible>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QMenu>
#include <QWheelEvent>

class EditingTest : public QObject
{
    Q_OBJECT

    static constexpr auto program = "N1 G0 X1\nN2 G1 X2\nN3 G1 X3\nN4 M30\n";

    static QSet<QString> enabledItems(TransferRig& rig);

private Q_SLOTS:
    void shortcutsReachTheButtons_data();
    void shortcutsReachTheButtons();
    void tabNeverTraps();
    void zoomKeys();
    void noWayInForACarriageReturn();
    void menuOffersWhatCanBeDone();
    void assistiveTechnologyReadsTheText();
};

QSet<QString> EditingTest::enabledItems(TransferRig& rig)
{
    QContextMenuEvent wanted(QContextMenuEvent::Keyboard, QPoint(20, 20), rig.editor->mapToGlobal(QPoint(20, 20)));
    QApplication::sendEvent(rig.editor->viewport(), &wanted);
    QSet<QString> texts;
    auto* menu = rig.view->findChild<QMenu*>("editorMenu");
    if (!menu) return {"no menu"};
    for (const auto* action : menu->actions())
        if (action->isEnabled() && !action->isSeparator()) texts += action->text().remove('&').remove("...");
    delete menu;
    return texts;
}

void EditingTest::shortcutsReachTheButtons_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("lock") << int(Qt::Key_L) << QByteArray(program);
    QTest::newRow("new") << int(Qt::Key_N) << QByteArray();
    for (const auto key : {Qt::Key_D, Qt::Key_T, Qt::Key_U})
        QTest::newRow(qPrintable("nothing " + QKeySequence(key).toString())) << int(key) << QByteArray(program);
}

void EditingTest::shortcutsReachTheButtons()
{
    QFETCH(int, key);
    QFETCH(QByteArray, text);
    TransferRig rig;
    rig.startTyping(program);
    rig.click("btnLock");
    rig.editor->setFocus();
    rig.editor->moveCaretTo(12);
    QTest::keyClick(rig.editor, static_cast<Qt::Key>(key), Qt::ControlModifier);
    QTRY_COMPARE(rig.editor->wholeText(), text);
    QTRY_COMPARE(rig.view->textLocked(), key == Qt::Key_L);
    if (key == Qt::Key_L) return;
    QTest::keyClick(rig.editor, Qt::Key_Insert); // must not begin to type over
    rig.editor->moveCaretTo(0);
    QTest::keyClicks(rig.editor, "M0");
    QCOMPARE(rig.editor->wholeText(), "M0" + text);
}

void EditingTest::tabNeverTraps()
{
    TransferRig rig;
    rig.startTyping(program);
    for (const bool locked : {true, false}) {
        rig.view->setTextLocked(locked);
        rig.editor->setFocus();
        QTest::keyClick(rig.editor, Qt::Key_Tab);
        QVERIFY(!rig.editor->hasFocus());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QVERIFY(rig.editor->hasFocus());
    }
    QCOMPARE(rig.editor->wholeText(), QByteArray(program));
}

void EditingTest::zoomKeys()
{
    TransferRig rig;
    rig.startTyping(program);
    const auto height = [&] { return rig.editor->textHeight(0); };
    const int normal = height();
    const int margin = rig.editor->marginWidth(0);
    QTest::keyClick(rig.editor, Qt::Key_Plus, Qt::ControlModifier);
    QTest::keyClick(rig.editor, Qt::Key_Equal, Qt::ControlModifier);
    QVERIFY(height() > normal);
    QVERIFY(rig.editor->marginWidth(0) > margin); // or the numbers are cut off
    QTest::keyClick(rig.editor, Qt::Key_0, Qt::ControlModifier);
    QCOMPARE(height(), normal);
    QTest::keyClick(rig.editor, Qt::Key_Minus, Qt::ControlModifier);
    QVERIFY(height() < normal);
    QTest::keyClick(rig.editor, Qt::Key_0, Qt::ControlModifier);
    const QPoint at(50, 50);
    QWheelEvent wheel(at, rig.editor->viewport()->mapToGlobal(at), {}, QPoint(0, 120), Qt::NoButton,
                      Qt::ControlModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(rig.editor->viewport(), &wheel);
    QVERIFY(height() > normal);
}

void EditingTest::noWayInForACarriageReturn()
{
    TransferRig rig;
    rig.startTyping("");
    rig.click("btnLock");
    QApplication::clipboard()->setText("G0\r\nG1\rG2\n");
    QTest::keyClick(rig.editor, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(rig.editor->wholeText(), QByteArray("G0\nG1\nG2\n"));
    QTest::keyClick(rig.editor, Qt::Key_Return);
    QTest::keyClick(rig.editor, Qt::Key_M, Qt::ControlModifier);
    QInputMethodEvent commit;
    commit.setCommitString("G3\r\nG4");
    QApplication::sendEvent(rig.editor, &commit);
    QCOMPARE(rig.editor->wholeText(), QByteArray("G0\nG1\nG2\n\nG3\nG4"));
    for (int i = 0; i < 10 && rig.editor->isUndoAvailable(); ++i)
        QTest::keyClick(rig.editor, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(rig.editor->textSize(), 0);
    QTest::keyClick(rig.editor, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QTest::keyClick(rig.editor, Qt::Key_Y, Qt::ControlModifier);
    QVERIFY(rig.editor->wholeText().startsWith("G0\nG1\nG2\n"));
}

void EditingTest::menuOffersWhatCanBeDone()
{
    using Texts = QSet<QString>;
    TransferRig rig;
    rig.startTyping(program);
    QApplication::clipboard()->setText("G9");
    QCOMPARE(enabledItems(rig), (Texts{"Select all", "Find", "Go to line"}));
    rig.editor->moveCaretTo(12);
    QTest::mouseClick(rig.editor->viewport(), Qt::RightButton, {}, QPoint(200, 5));
    QCOMPARE(rig.editor->caret(), 12); // asking for the menu does not choose where to continue
    rig.editor->selectAll();
    QCOMPARE(enabledItems(rig), (Texts{"Copy", "Select all", "Find", "Go to line"}));
    rig.click("btnLock");
    QCOMPARE(enabledItems(rig), (Texts{"Cut", "Copy", "Paste", "Select all", "Find", "Go to line"}));
    QTest::keyClicks(rig.editor, "M0");
    QCOMPARE(enabledItems(rig), (Texts{"Undo", "Paste", "Select all", "Find", "Go to line"}));
    while (rig.editor->isUndoAvailable())
        QTest::keyClick(rig.editor, Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(enabledItems(rig).contains("Redo"));

    rig.holdLineAfter(2);
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    QCOMPARE(enabledItems(rig), (Texts{"Copy", "Find", "Go to line"}));
}

void EditingTest::assistiveTechnologyReadsTheText()
{
    ProgramEditor editor;
    auto* access = QAccessible::queryAccessibleInterface(&editor);
    QVERIFY(access && access->textInterface());
    auto* text = access->textInterface();
    editor.setProgram("G0\n(\xE9\xE8)X1\nM30");
    editor.appendReceived("\xE9\n");
    const QString whole = QString::fromUtf8(editor.wholeText());
    QCOMPARE(text->characterCount(), whole.size());
    QCOMPARE(text->text(0, -1), whole);
    for (int at = 0; at <= whole.size(); ++at) {
        text->setCursorPosition(at);
        QCOMPARE(text->cursorPosition(), at);
        QCOMPARE(text->text(at, -1), whole.mid(at));
    }
    int start = 0;
    int end = 0;
    QCOMPARE(text->textAtOffset(5, QAccessible::LineBoundary, &start, &end), whole.mid(3, 7));
    QCOMPARE(start, 3);
    QCOMPARE(end, 10);
    text->setSelection(0, 4, 6);
    QCOMPARE(editor.lineText(editor.selection()), whole.mid(4, 2));
    editor.setReadOnly(true);
    QVERIFY(access->state().readOnly);
}

QTEST_MAIN(EditingTest)
#include "transfer_editing.moc"
