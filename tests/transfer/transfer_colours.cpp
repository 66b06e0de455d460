// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/EditorColours.h"
#include "transfer/GCodeColouring.h"
#include "transfer/ProgramEditor.h"

#include <QTest>

class ColoursTest : public QObject
{
    Q_OBJECT

    // One letter a byte, by GCodeStyle.
    static QByteArray letters(QByteArray styles)
    {
        for (char& style : styles)
            style = ".gacnop;mh"[static_cast<int>(style)];
        return styles;
    }
    static QByteArray lettersIn(const ProgramEditor& editor, ProgramEditor::Line line)
    {
        QByteArray styles;
        for (auto at = line.start; at < line.end; ++at)
            styles +=
                static_cast<char>(editor.SendScintilla(QsciScintilla::SCI_GETSTYLEAT, static_cast<unsigned long>(at)));
        return letters(styles);
    }

private Q_SLOTS:
    void wordsAreColouredByTheirLetter_data();
    void wordsAreColouredByTheirLetter();
    void everyTextCanBeRead_data();
    void everyTextCanBeRead();
    void whatIsSeenIsColouredWhereverItIs();
    void themeIsFollowed();
    void longLineIsCutOnTheScreenOnly();
    void endlessLineIsNotShownNorEdited();
};

void ColoursTest::wordsAreColouredByTheirLetter_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("styles");
    const auto row = [](const char* line, const char* styles) {
        QTest::newRow(line) << QByteArray(line) << QByteArray(styles);
    };
    row("N10 G01 X-1.5F200", "nnn.ggg.aaaaacccc");
    row("g2x1i.5r+3m08", "ggaaaaaaaaggg");
    row("O0123(PART)T1", "ooooo;;;;;;cc");
    row(":123", "oooo");
    row(" %1 X2", ".ppppp");
    row("X1%", "aa.");
    row("X1(A;B)Y2;Z3(", "aa;;;;;aa;;;;");
    row("X1(A)B)", "aa;;;a.");
    row("X1(OPEN G1", "aa;;;;;;;;");
    row("#100=#1+2", "mmmm.mmmm");
    row("IF[#1GT5]GOTO10", "mm.mmmmm.mmmmmm");
    row("N5WHILE[#1LT3]DO1", "nnmmmmm.mmmmm.mmm");
    row("X#101 Z-#5", "ammmm.aamm");
    row("M98P1000L2", "ggg.......");
    row("G 1 X 20", "ggg.aaaa");
    row("/N1", ".nn");
    row("", "");
}

void ColoursTest::wordsAreColouredByTheirLetter()
{
    QFETCH(QByteArray, line);
    QByteArray styles(line.size(), '\x7F');
    GCode::styleLine({line.constData(), static_cast<std::size_t>(line.size())}, styles.data());
    QTEST(letters(styles), "styles");
}

void ColoursTest::everyTextCanBeRead_data()
{
    QTest::addColumn<QColor>("paper");
    QTest::addColumn<QColor>("ink");
    QTest::addColumn<QColor>("accent");
    QTest::newRow("light") << QColor("#ffffff") << QColor("#000000") << QColor("#308cc6");
    QTest::newRow("dark") << QColor("#1e1e1e") << QColor("#eeeeee") << QColor("#2a82da");
    QTest::newRow("black") << QColor("#000000") << QColor("#ffffff") << QColor("#ffff00");
    QTest::newRow("sepia") << QColor("#f4ecd8") << QColor("#5b4636") << QColor("#c08040");
    QTest::newRow("middle grey") << QColor("#808080") << QColor("#ffffff") << QColor("#202020");
    QTest::newRow("ink as the paper") << QColor("#304050") << QColor("#304050") << QColor("#304050");
}

void ColoursTest::everyTextCanBeRead()
{
    QFETCH(QColor, paper);
    QFETCH(QColor, ink);
    QFETCH(QColor, accent);
    QPalette palette;
    palette.setColor(QPalette::Base, paper);
    palette.setColor(QPalette::Text, ink);
    palette.setColor(QPalette::Highlight, accent);
    const EditorColours colours(palette);
    for (int style = 0; style < GCode::styleCount; ++style)
        for (const auto& ground : {colours.paper, colours.selection, colours.lineOut, colours.match}) {
            const double contrast = EditorColours::contrast(colours.text[static_cast<std::size_t>(style)], ground);
            QVERIFY2(contrast >= 4.5, qPrintable(QString("style %1: %2").arg(style).arg(contrast)));
        }
    QVERIFY(EditorColours::contrast(colours.lineNumber, colours.margin) >= 4.5);
    QVERIFY(EditorColours::contrast(colours.ink, colours.alarm) >= 4.5);
    QCOMPARE(EditorColours::contrast(Qt::white, Qt::black), 21.0);
}

void ColoursTest::whatIsSeenIsColouredWhereverItIs()
{
    ProgramEditor editor;
    editor.resize(400, 300);
    editor.show();
    editor.setProgram(QByteArray("G1 X2\n").repeated(1000));
    for (const int line : {900, 0, 500, 999}) { // back and forth: a jump must not leave a gap
        editor.moveCaretTo(6 * line);
        editor.grab();
        QCOMPARE(lettersIn(editor, editor.lineAt(6 * line)), QByteArray("gg.aa."));
        QCOMPARE(lettersIn(editor, editor.lineAt(editor.firstVisible())), QByteArray("gg.aa."));
    }
    editor.moveCaretTo(0);
    QTest::keyClicks(&editor, "(");
    editor.grab();
    QCOMPARE(lettersIn(editor, editor.lineAt(0)), QByteArray(";;;;;;;"));
}

void ColoursTest::themeIsFollowed()
{
    ProgramEditor editor;
    QPalette dark;
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Text, Qt::white);
    editor.setPalette(dark);
    const auto colour = static_cast<QRgb>(
        editor.SendScintilla(QsciScintilla::SCI_STYLEGETFORE, static_cast<unsigned long>(GCodeStyle::Command)));
    const QColor command(static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
                         static_cast<int>(colour >> 16 & 0xFF));
    QCOMPARE(command, EditorColours(dark).text[static_cast<std::size_t>(GCodeStyle::Command)]);
}

void ColoursTest::longLineIsCutOnTheScreenOnly()
{
    // A character of two bytes lies across the cut.
    const QByteArray text = QByteArray(3999, 'X') + "\xC3\xA9" + QByteArray(5000, 'Y');
    ProgramEditor editor;
    editor.setProgram("G1\n" + QByteArray(3999, 'X') + "\xE9" + QByteArray(5000, 'Y') + "\nG2");
    QCOMPARE(editor.wholeText(), "G1\n" + text + "\nG2");
    const auto line = editor.lineAt(10);
    const QByteArray styles = lettersIn(editor, line);
    QCOMPARE(styles.indexOf('h'), 3999);
    QCOMPARE(styles.count('h'), styles.size() - 3999);
    QVERIFY(editor.annotation(1).contains("3,999"));
    QVERIFY(editor.annotation(0).isEmpty() && editor.annotation(2).isEmpty());
    editor.setProgram("G1\nG2");
    QVERIFY(editor.annotation(1).isEmpty());
}

void ColoursTest::endlessLineIsNotShownNorEdited()
{
    ProgramEditor editor;
    editor.setProgram(QByteArray(600'000, 'X'));
    QVERIFY(!editor.isShown());
    editor.show();
    editor.grab();
    QTest::keyClicks(&editor, "G");
    QCOMPARE(editor.textSize(), 600'000);
    editor.markLineOut(editor.lineAt(0));
    QCOMPARE(editor.caret(), 600'000);
    editor.setProgram("G1\n");
    QVERIFY(editor.isShown());
}

QTEST_MAIN(ColoursTest)
#include "transfer_colours.moc"
