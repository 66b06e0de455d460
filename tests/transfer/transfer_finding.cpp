// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ProgramSearch.h"
#include "transfer/TransferRig.h"

#include <QInputDialog>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSpinBox>

class FindingTest : public QObject
{
    Q_OBJECT

    static constexpr auto program = "N1 G0 X1\nN2 G1 X2\nN3 G1 X3\nN4 M30\n";

    // The send is under way and the line takes nothing more.
    static void startHeld(TransferRig& rig, const QByteArray& text)
    {
        rig.startTyping(text);
        rig.holdLineAfter(3);
        rig.click("btnSend");
        QTRY_VERIFY(rig.isHeld());
        QVERIFY(rig.view->dncRunning());
    }
    static QLineEdit* field(const TransferRig& rig) { return rig.view->findChild<QLineEdit*>("txtFind"); }
    static QString selected(const TransferRig& rig) { return rig.editor->lineText(rig.editor->selection()); }

private Q_SLOTS:
    void findGoesAroundTheProgram();
    void whatIsTypedIsFoundAtOnce();
    void missIsToldAndMovesNothing();
    void escapeClosesTheBarAndGoesBack();
    void searchFindsEveryPlace_data();
    void searchFindsEveryPlace();
    void searchInSlicesMissesNothing();
    void findingLeavesARunningTransferAlone();
    void goToLine();
    void goToLineLeavesARunningTransferAlone();
    void continuesWhereFindWent();
};

void FindingTest::findGoesAroundTheProgram()
{
    TransferRig rig;
    rig.startTyping(program);
    QTest::keyClick(rig.editor, Qt::Key_F, Qt::ControlModifier);
    QTRY_VERIFY(field(rig)->hasFocus());
    QTest::keyClicks(field(rig), "g1");
    QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 2);
    QTest::keyClick(field(rig), Qt::Key_Return);
    QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 3);
    QVERIFY(rig.text("lblFindOutcome").isEmpty());
    QTest::keyClick(field(rig), Qt::Key_F3);
    QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 2);
    QCOMPARE(rig.text("lblFindOutcome"), "Continued from the other end");
    QTest::keyClick(field(rig), Qt::Key_Return, Qt::ShiftModifier);
    QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 3);
    QTest::keyClick(rig.editor, Qt::Key_F3, Qt::ShiftModifier);
    QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 2);
    QVERIFY(rig.text("lblFindOutcome").isEmpty());
    rig.click("btnFindNext");
    QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 3);
    rig.click("btnFindPrevious");
    QCOMPARE(selected(rig), "G1");
}

void FindingTest::whatIsTypedIsFoundAtOnce()
{
    TransferRig rig;
    rig.startTyping(program);
    rig.editor->moveCaretTo(10);
    QTest::keyClick(rig.editor, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(field(rig), "X3"); // each letter goes on from where the first was found
    QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 3);
    QCOMPARE(selected(rig), "X3");
    QTest::keyClick(rig.editor, Qt::Key_F, Qt::ControlModifier); // what is selected is offered
    QCOMPARE(field(rig)->selectedText(), "X3");
}

void FindingTest::missIsToldAndMovesNothing()
{
    TransferRig rig;
    rig.startTyping(program);
    rig.editor->moveCaretTo(10);
    const QColor before = field(rig)->palette().color(QPalette::Base);
    QTest::keyClick(rig.editor, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(field(rig), "Q9");
    QCOMPARE(rig.text("lblFindOutcome"), "Not found");
    QVERIFY(field(rig)->palette().color(QPalette::Base) != before);
    QCOMPARE(rig.editor->caret(), 10);
    for (int i = 0; i < 2; ++i)
        QTest::keyClick(field(rig), Qt::Key_Backspace);
    QVERIFY(rig.text("lblFindOutcome").isEmpty());
    QCOMPARE(field(rig)->palette().color(QPalette::Base), before);
}

void FindingTest::escapeClosesTheBarAndGoesBack()
{
    TransferRig rig;
    rig.startTyping(program);
    for (const bool byKey : {true, false}) {
        QTest::keyClick(rig.editor, Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(field(rig)->hasFocus());
        if (byKey)
            QTest::keyClick(field(rig), Qt::Key_Escape);
        else
            rig.click("btnFindClose");
        QVERIFY(!rig.isShown("findBar"));
        QVERIFY(rig.editor->hasFocus());
    }
    QTest::keyClick(rig.editor, Qt::Key_F3); // nothing to find yet: asks
    QVERIFY(rig.isShown("findBar"));
}

void FindingTest::searchFindsEveryPlace_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("at"); // -1 not found
    QTest::addColumn<bool>("wrapped");
    const auto row = [](const char* name, const QByteArray& text, const QString& pattern, bool forward, int from,
                        int at,
                        bool wrapped) { QTest::newRow(name) << text << pattern << forward << from << at << wrapped; };
    row("at the start", "G1X2", "g1", true, 0, 0, false);
    row("at the end", "X2G1", "g1", true, 0, 2, false);
    row("from the match itself", "G1G1", "G1", true, 2, 2, false);
    row("around", "G1X2", "G1", true, 1, 0, true);
    row("from the very end", "G1", "G1", true, 2, 0, true);
    row("across where it began", "G1X2", "1X", true, 2, 1, true);
    row("back", "G1G1", "G1", false, 2, 0, false);
    row("back around", "X2G1", "G1", false, 2, 2, true);
    row("back from the top", "G1X2", "G1", false, 0, 0, true);
    row("back, reaching past the start", "G1X2", "1X", false, 2, 1, false);
    row("not there", "G1X2", "G2", true, 1, -1, false);
    row("back, not there", "G1X2", "G2", false, 1, -1, false);
    row("longer than the program", "G1", "G1X", true, 0, -1, false);
    row("empty program", "", "G1", true, 0, -1, false);
    row("other letters", "(\xE9)", QString(QChar(0xE9)), true, 0, 1, false);
}

void FindingTest::searchFindsEveryPlace()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, pattern);
    QFETCH(bool, forward);
    QFETCH(int, from);
    QFETCH(int, at);
    QFETCH(bool, wrapped);
    ProgramEditor editor;
    editor.setProgram(text);
    ProgramSearch search(&editor);
    QSignalSpy found(&search, &ProgramSearch::found);
    QSignalSpy missed(&search, &ProgramSearch::notFound);
    search.start(pattern, forward ? SearchDirection::Forward : SearchDirection::Backward, from);
    QTRY_COMPARE(found.count() + missed.count(), 1);
    QCOMPARE(found.count(), at < 0 ? 0 : 1);
    if (at < 0) return;
    QCOMPARE(found[0][0].value<ProgramEditor::Line>().start, at);
    QCOMPARE(found[0][1].toBool(), wrapped);
}

void FindingTest::searchInSlicesMissesNothing()
{
    // The only match lies across the border between two slices, whichever side they are counted from.
    ProgramEditor editor;
    const auto slice = ProgramSearch::sliceSize;
    QByteArray text = QByteArray(slice - 1, 'a') + "XYZ" + QByteArray(slice - 2, 'b');
    for (qsizetype at = 79; at < text.size(); at += 80)
        if (text[at] != 'X' && text[at] != 'Y' && text[at] != 'Z') text[at] = '\n';
    editor.setProgram(text);
    ProgramSearch search(&editor);
    QSignalSpy found(&search, &ProgramSearch::found);
    for (const auto direction : {SearchDirection::Forward, SearchDirection::Backward})
        for (const qsizetype from : {qsizetype(0), slice, text.size()}) {
            found.clear();
            search.start("xyz", direction, from);
            QTRY_COMPARE(found.count(), 1);
            QCOMPARE(found[0][0].value<ProgramEditor::Line>().start, slice - 1);
        }
    found.clear();
    search.start("b", SearchDirection::Forward, 0);
    editor.setProgram("b"); // the text that was searched is gone
    QTest::qWait(0);
    QCOMPARE(found.count(), 0);
}

void FindingTest::findingLeavesARunningTransferAlone()
{
    QByteArray text;
    for (int line = 1; line <= 500; ++line)
        text += "N" + QByteArray::number(line) + " G1\n";
    TransferRig rig;
    startHeld(rig, text);
    const auto caret = rig.editor->caret();
    QTest::keyClick(rig.editor, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(field(rig), "N400");
    QCOMPARE(rig.editor->caret(), caret);
    QCOMPARE(rig.editor->lineText(rig.editor->shownPlace()), "N400");
    const auto seen = rig.editor->firstVisible();
    QVERIFY(seen > caret);
    rig.releaseLine();
    QTRY_VERIFY(rig.editor->caret() > caret + 50);
    if (rig.view->dncRunning()) QCOMPARE(rig.editor->firstVisible(), seen); // the operator still looks there
    QCOMPARE(rig.readUntilIdle(), QByteArray(text).replace("\n", "\r\n"));
    QCOMPARE(rig.editor->shownPlace().end, 0);
}

void FindingTest::goToLine()
{
    TransferRig rig;
    rig.startTyping(program);
    QTest::keyClick(rig.editor, Qt::Key_G, Qt::ControlModifier);
    auto* dialog = rig.view->findChild<QInputDialog*>("goToLineDialog");
    QVERIFY(dialog && dialog->isVisible());
    auto* number = dialog->findChild<QSpinBox*>();
    QCOMPARE(number->maximum(), 5);
    QTest::keyClicks(number, "3");
    QTest::keyClick(number, Qt::Key_Return);
    QTRY_COMPARE(rig.editor->caret(), rig.editor->lineNumbered(3).start);
    QVERIFY(rig.editor->hasFocus());
}

void FindingTest::goToLineLeavesARunningTransferAlone()
{
    TransferRig rig;
    startHeld(rig, QByteArray("G1\n").repeated(500));
    const auto caret = rig.editor->caret();
    QTest::keyClick(rig.editor, Qt::Key_G, Qt::ControlModifier);
    auto* dialog = rig.view->findChild<QInputDialog*>("goToLineDialog");
    dialog->setIntValue(400);
    dialog->accept();
    QCOMPARE(rig.editor->caret(), caret);
    QCOMPARE(rig.editor->shownPlace().start, rig.editor->lineNumbered(400).start);
    QVERIFY(rig.editor->firstVisible() > caret);
    QTest::keyClick(rig.editor, Qt::Key_Escape);
    QCOMPARE(rig.editor->shownPlace().end, 0); // follows again
}

void FindingTest::continuesWhereFindWent()
{
    TransferRig rig;
    rig.startTyping(program);
    QTest::keyClick(rig.editor, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(field(rig), "N3");
    rig.chooseStart(1);
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), QByteArray("N3 G1 X3\r\nN4 M30\r\n"));
}

QTEST_MAIN(FindingTest)
#include "transfer_finding.moc"
