// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

#include <QAccessible>
#include <QClipboard>
#include <QInputDialog>
#include <QInputMethodEvent>
#include <QLineEdit>

/// The editor holds the program byte for byte, and whatever the operator does in it is noticed.
class EditorTest : public QObject
{
    Q_OBJECT

    static constexpr auto program = "N1 G0 X1\nN2 G1 X2\nN3 G1 X3\nN4 M30\n";

private Q_SLOTS:
    void keysDoNoHarm()
    {
        TransferRig rig;
        rig.startWith(program);
        rig.editor->setFocus();
        for (int lock = 0; lock < 2; ++lock) { // Tab always leaves the editor, Ctrl+L locks and unlocks
            QTest::keyClick(rig.editor, Qt::Key_Tab);
            QVERIFY(!rig.editor->hasFocus());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
            QVERIFY(rig.editor->hasFocus());
            QTest::keyClick(rig.editor, Qt::Key_L, Qt::ControlModifier);
            QTRY_COMPARE(rig.view->textLocked(), lock == 1);
        }
        rig.click("btnLock");
        for (const auto key : {Qt::Key_D, Qt::Key_T, Qt::Key_U, Qt::Key_M}) // commands of the library
            QTest::keyClick(rig.editor, key, Qt::ControlModifier);
        QTest::keyClick(rig.editor, Qt::Key_Insert); // must not switch to overtyping
        QTest::keyClicks(rig.editor, "M0");
        QCOMPARE(rig.editor->wholeText(), QByteArray("M0") + program);
        QTest::keyClick(rig.editor, Qt::Key_A, Qt::ControlModifier);
        QApplication::clipboard()->setText("G0\r\nG1\rG2\n");
        QTest::keyClick(rig.editor, Qt::Key_V, Qt::ControlModifier);
        QTest::keyClick(rig.editor, Qt::Key_Return);
        QInputMethodEvent commit;
        commit.setCommitString("G3\r\nG4");
        QApplication::sendEvent(rig.editor, &commit);
        QCOMPARE(rig.editor->wholeText(), QByteArray("G0\nG1\nG2\n\nG3\nG4")); // no carriage return gets in
    }

    void endlessLineIsSentButNotShownNorEdited()
    {
        TransferRig rig;
        rig.startWith(QByteArray(600'000, 'X'));
        rig.click("btnLock");
        rig.view->grab();
        QTest::keyClicks(rig.editor, "G");
        QVERIFY(!rig.editor->isShown());
        rig.click("btnSend");
        QVERIFY(rig.readUntilIdle() == QByteArray(600'000, 'X'));
    }

    void assistiveTechnologyReadsTextAndButtons()
    {
        TransferRig rig;
        rig.start();
        auto* access = QAccessible::queryAccessibleInterface(rig.editor);
        auto* text = access->textInterface();
        rig.editor->setProgram("G0\n(\xE9\xE8)X1\nM30\xE9\n");
        const QString whole = QString::fromUtf8(rig.editor->wholeText());
        for (int at = 0; at <= whole.size(); ++at) {
            text->setCursorPosition(at);
            QCOMPARE(text->cursorPosition(), at);
            QCOMPARE(text->text(at, -1), whole.mid(at));
        }
        int start = 0;
        int end = 0;
        QCOMPARE(text->textAtOffset(5, QAccessible::LineBoundary, &start, &end), whole.mid(3, 7));
        QCOMPARE(start + end, 13);
        rig.editor->setReadOnly(true);
        QVERIFY(access->state().readOnly);
        for (const auto* button : rig.view->findChildren<QAbstractButton*>(QRegularExpression("^btn")))
            QVERIFY2(!button->accessibleName().isEmpty() || !button->text().isEmpty(),
                     qPrintable(button->objectName()));
    }

    void findAndGoToLineSetTheStartButDisturbNoSend()
    {
        TransferRig rig;
        rig.startWith(program);
        auto* field = rig.find<QLineEdit>("txtFind");
        QTest::keyClick(rig.editor, Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(field->hasFocus());
        QTest::keyClicks(field, "g1");
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 3);
        QTest::keyClick(field, Qt::Key_F3);
        QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 2);
        QTest::keyClick(field, Qt::Key_Escape);
        QVERIFY(!rig.isShown("findBar") && rig.editor->hasFocus());
        QTest::keyClick(rig.editor, Qt::Key_G, Qt::ControlModifier);
        auto* dialog = rig.find<QInputDialog>("goToLineDialog");
        dialog->setIntValue(3);
        dialog->accept();
        rig.chooseStart(1);
        rig.sendUntilHeld(1);
        rig.view->activateWindow(); // the dialog's was active
        QVERIFY(QTest::qWaitForWindowActive(rig.view.get()));
        const auto caret = rig.editor->caret();
        field->setText("N1");
        QTest::keyClick(rig.editor, Qt::Key_F3);
        QCOMPARE(rig.editor->lineText(rig.editor->shownPlace()), "N1");
        QCOMPARE(rig.editor->caret(), caret);
        rig.releaseLine();
        QCOMPARE(rig.readUntilIdle(), QByteArray("N3 G1 X3\r\nN4 M30\r\n"));
    }
};

QTEST_MAIN(EditorTest)
#include "transfer_editor.moc"
