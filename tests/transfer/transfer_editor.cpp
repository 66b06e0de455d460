// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ProgramSearch.h"
#include "transfer/TransferRig.h"

#include <QAccessible>
#include <QClipboard>
#include <QInputDialog>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QSignalSpy>

/// The editor holds the program byte for byte, and whatever the operator does in it is seen.
class EditorTest : public QObject
{
    Q_OBJECT

    static constexpr auto program = "N1 G0 X1\nN2 G1 X2\nN3 G1 X3\nN4 M30\n";

private Q_SLOTS:
    void largeFileIsWholeAcrossItsPieces()
    {
        // A CR LF and a character of two bytes lie across the borders between pieces of a megabyte.
        const QByteArray filling((1 << 20) - 4, 'a');
        ProgramEditor editor;
        editor.setProgram(filling + "\xFF\r\n\r\n" + filling + "\xFF\xFF\xFF\xFF" + filling);
        QVERIFY(editor.wholeText() ==
                filling + "\xC3\xBF\n\n" + filling + QByteArray("\xC3\xBF").repeated(4) + filling);
    }

    void onlyTheOperatorsChangesCountAndCanBeUndone()
    {
        ProgramEditor editor;
        QSignalSpy touched(&editor, &ProgramEditor::operatorTouched);
        QTest::keyClicks(&editor, "X"); // gone with the next program, and never to be undone in it
        editor.setReadOnly(true);
        editor.setProgram("G0\nG1\n");
        editor.markLineOut(editor.lineAt(0));
        editor.clearLineOut();
        editor.moveCaretTo(3);
        editor.appendReceived("G2\n");
        QTest::keyClicks(&editor, "X");
        QVERIFY(editor.isReadOnly());
        editor.setReadOnly(false);
        editor.undo();
        QCOMPARE(editor.wholeText(), QByteArray("G0\nG1\nG2\n"));
        QCOMPARE(touched.count(), 1);
        QTest::keyClick(&editor, Qt::Key_Up);
        QCOMPARE(touched.count(), 2);
        QTest::keyClick(&editor, Qt::Key_Delete); // the caret stays, the text does not
        QCOMPARE(touched.count(), 3);
    }

    void keysDoNoHarm()
    {
        TransferRig rig;
        rig.startWith(program);
        for (int lock = 0; lock < 2; ++lock) { // Tab never traps, Ctrl+L locks and unlocks
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
        QTest::keyClick(rig.editor, Qt::Key_Insert); // must not begin to type over
        QTest::keyClicks(rig.editor, "M0");
        QCOMPARE(rig.editor->wholeText(), QByteArray("M0") + program);
        QTest::keyClick(rig.editor, Qt::Key_A, Qt::ControlModifier);
        QApplication::clipboard()->setText("G0\r\nG1\rG2\n");
        QTest::keyClick(rig.editor, Qt::Key_V, Qt::ControlModifier);
        QTest::keyClick(rig.editor, Qt::Key_Return);
        QInputMethodEvent commit;
        commit.setCommitString("G3\r\nG4");
        QApplication::sendEvent(rig.editor, &commit);
        QCOMPARE(rig.editor->wholeText(), QByteArray("G0\nG1\nG2\n\nG3\nG4")); // no carriage return comes in
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

    void searchFindsEveryPlace()
    {
        const auto check = [](const QByteArray& text, const QString& pattern, qsizetype from, qsizetype forward,
                              qsizetype backward) {
            ProgramEditor editor;
            editor.setProgram(text);
            ProgramSearch search(&editor);
            for (const auto direction : {SearchDirection::Forward, SearchDirection::Backward}) {
                QSignalSpy found(&search, &ProgramSearch::found);
                QSignalSpy missed(&search, &ProgramSearch::notFound);
                search.start(pattern, direction, from);
                QTRY_COMPARE(found.count() + missed.count(), 1);
                const auto at = found.isEmpty() ? -1 : found[0][0].value<ProgramEditor::Line>().start;
                QCOMPARE(at, direction == SearchDirection::Forward ? forward : backward);
            }
        };
        check("G1g1", "g1", 0, 0, 2);
        check("G1g1", "g1", 2, 2, 0);
        check("G1g1", "g1", 4, 0, 2);
        check("G1X2", "1x", 2, 1, 1);
        check("G1X2", "G2", 1, -1, -1);
        check("G1", "G1X", 0, -1, -1);
        const auto border = ProgramSearch::sliceSize; // of two slices, the match across it
        const QByteArray filling = QByteArray("aaaaaaa\n").repeated(border / 8);
        check(filling.chopped(1) + "XYZ" + filling, "xyz", 0, border - 1, border - 1);
    }

    void findAndGoToLineLeadTheSendButDisturbNone()
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
        rig.view->activateWindow(); // the dialog was
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
