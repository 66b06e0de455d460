// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ProgramEditor.h"

#include <QSignalSpy>
#include <QTest>

class EditorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyByteOfAFileIsOneCharacter();
    void onlyLineFeedsEndLines();
    void linesAreFoundFromAnyPosition_data();
    void linesAreFoundFromAnyPosition();
    void largeFileIsWholeAcrossItsPieces();
    void programCannotBeUndone();
    void lockOutlastsChangesOfOurs();
    void onlyTheOperatorsMovesAreReported();
    void oneLineIsMarkedAtATime();
};

void EditorTest::everyByteOfAFileIsOneCharacter()
{
    QByteArray file;
    for (int code = 0; code < 256; ++code)
        if (code != '\r' && code != '\n') file.append(static_cast<char>(code));
    ProgramEditor editor;
    editor.setProgram(file);
    QCOMPARE(QString::fromUtf8(editor.wholeText()), QString::fromLatin1(file));
    QCOMPARE(editor.lineText(editor.lineAt(100)), QString::fromLatin1(file));
}

void EditorTest::onlyLineFeedsEndLines()
{
    ProgramEditor editor;
    editor.setProgram("a\x85\x0B\x0C\x1C"
                      "b\nc"); // NEL, vertical tab, form feed, file separator
    QCOMPARE(editor.lines(), 2);
}

void EditorTest::linesAreFoundFromAnyPosition_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("line");
    const auto row = [](const QByteArray& text, int position, const char* line) {
        QTest::addRow("\"%s\" at %d", text.toPercentEncoding().constData(), position) << text << position << line;
    };
    row("", 0, "");
    row("ab", 0, "ab");
    row("ab", 2, "ab");
    row("ab\ncd", 2, "ab\n");
    row("ab\ncd", 3, "cd");
    row("ab\ncd", 5, "cd");
    row("ab\n", 3, "");
    row("ab\n", 2, "ab\n");
}

void EditorTest::linesAreFoundFromAnyPosition()
{
    QFETCH(QByteArray, text);
    QFETCH(int, position);
    ProgramEditor editor;
    editor.setProgram(text);
    QTEST(editor.lineText(editor.lineAt(position)), "line");
}

void EditorTest::largeFileIsWholeAcrossItsPieces()
{
    // A CR LF and a character of two bytes lie across each border between pieces of a megabyte.
    QByteArray file;
    QByteArray text;
    for (int megabyte = 0; megabyte < 3; ++megabyte) {
        const QByteArray filling((1 << 20) - 4, static_cast<char>('a' + megabyte));
        file += megabyte == 0 ? filling + "\xFF\r\n\r" : "\n" + filling + "\xFF\r\n";
        text += megabyte == 0 ? filling + "\xC3\xBF\n" : "\n" + filling + "\xC3\xBF\n";
    }
    ProgramEditor editor;
    editor.setProgram(file);
    QVERIFY(editor.wholeText() == text);
}

void EditorTest::programCannotBeUndone()
{
    ProgramEditor editor;
    editor.setProgram("G0\n");
    editor.appendReceived("G1\n");
    QVERIFY(!editor.isUndoAvailable());
    editor.undo();
    QCOMPARE(editor.wholeText(), QByteArray("G0\nG1\n"));
    QTest::keyClicks(&editor, "X"); // what the operator types can
    QVERIFY(editor.isUndoAvailable());
}

void EditorTest::lockOutlastsChangesOfOurs()
{
    ProgramEditor editor;
    editor.setReadOnly(true);
    editor.setProgram("G0\n");
    editor.appendReceived("G1\n");
    QVERIFY(editor.isReadOnly());
    QTest::keyClicks(&editor, "X");
    QCOMPARE(editor.wholeText(), QByteArray("G0\nG1\n"));
    editor.clearProgram();
    QCOMPARE(editor.textSize(), 0);
}

void EditorTest::onlyTheOperatorsMovesAreReported()
{
    ProgramEditor editor;
    QSignalSpy touched(&editor, &ProgramEditor::operatorTouched);
    editor.setProgram("G0\nG1\n");
    editor.moveCaretTo(3);
    editor.markLineOut(editor.lineAt(0));
    editor.clearLineOut();
    editor.appendReceived("G2\n");
    QTest::keyClick(&editor, Qt::Key_Shift);
    QCOMPARE(touched.count(), 0);
    QTest::keyClick(&editor, Qt::Key_Up);
    QCOMPARE(touched.count(), 1);
    QTest::keyClick(&editor, Qt::Key_Delete); // the caret stays, the text does not
    QCOMPARE(touched.count(), 2);
}

void EditorTest::oneLineIsMarkedAtATime()
{
    ProgramEditor editor;
    editor.setProgram("G0\nG1\nG2");
    for (const qsizetype position : {0, 3, 6}) {
        const auto line = editor.lineAt(position);
        editor.markLineOut(line);
        QTRY_COMPARE(editor.caret(), line.end);
        int marked = 0;
        for (int number = 0; number < editor.lines(); ++number)
            marked += editor.markersAtLine(number) != 0;
        QCOMPARE(marked, 1);
    }
    editor.setProgram("G3");
    QCOMPARE(editor.markersAtLine(0), 0U);
}

QTEST_MAIN(EditorTest)
#include "transfer_editor.moc"
