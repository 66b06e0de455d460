// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/ProgramEditor.h"
#include "editor/ProgramSearch.h"

#include <QSignalSpy>
#include <QTest>

/// The editor by itself: it holds the program byte for byte and finds every place in it.
class ProgramTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void largeFileIsWholeAcrossItsPieces()
    {
        // A CR LF and a two-byte character straddle the borders of one-megabyte pieces.
        const QByteArray filling((1 << 20) - 4, 'a');
        ProgramEditor editor;
        editor.setProgram(filling + "\xFF\r\n\r\n" + filling + "\xFF\xFF\xFF\xFF" + filling);
        QVERIFY(editor.wholeText() ==
                filling + "\xC3\xBF\n\n" + filling + QByteArray("\xC3\xBF").repeated(4) + filling);
    }

    void byteOrderMarkIsNoProgramText()
    {
        ProgramEditor editor;
        editor.setProgram("\xEF\xBB\xBFO1\r\n(\xEF\xBB\xBF)");
        QCOMPARE(editor.wholeText(), QByteArray("O1\n(\xC3\xAF\xC2\xBB\xC2\xBF)"));
    }

    void onlyTheOperatorsChangesCountAndCanBeUndone()
    {
        ProgramEditor editor;
        QSignalSpy touched(&editor, &ProgramEditor::operatorTouched);
        QTest::keyClicks(&editor, "X"); // gone with the next program, and undo must not bring it back
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

    void searchFindsEveryPlace_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<qsizetype>("from");
        QTest::addColumn<qsizetype>("forward"); // -1 where there is none
        QTest::addColumn<qsizetype>("backward");
        const auto row = [](const char* name, const QByteArray& text, const QString& pattern, qsizetype from,
                            qsizetype forward, qsizetype backward) {
            QTest::newRow(name) << text << pattern << from << forward << backward;
        };
        row("from the top", "G1g1", "g1", 0, 0, 2);
        row("at a match", "G1g1", "g1", 2, 2, 0);
        row("from the end", "G1g1", "g1", 4, 0, 2);
        row("within a match", "G1X2", "1x", 2, 1, 1);
        row("none", "G1X2", "G2", 1, -1, -1);
        row("longer than the text", "G1", "G1X", 0, -1, -1);
        const auto border = ProgramSearch::sliceSize;
        const QByteArray filling = QByteArray("aaaaaaa\n").repeated(border / 8);
        row("across the border of two slices", filling.chopped(1) + "XYZ" + filling, "xyz", 0, border - 1, border - 1);
    }

    void searchFindsEveryPlace()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, pattern);
        QFETCH(qsizetype, from);
        ProgramEditor editor;
        editor.setProgram(text);
        ProgramSearch search(&editor);
        for (const auto direction : {SearchDirection::Forward, SearchDirection::Backward}) {
            QSignalSpy found(&search, &ProgramSearch::found);
            QSignalSpy missed(&search, &ProgramSearch::notFound);
            search.start(pattern, direction, from);
            QTRY_COMPARE(found.count() + missed.count(), 1);
            const auto at = found.isEmpty() ? -1 : found[0][0].value<ProgramEditor::Line>().start;
            QTEST(at, direction == SearchDirection::Forward ? "forward" : "backward");
        }
    }
};

QTEST_MAIN(ProgramTest)
#include "editor_program.moc"
