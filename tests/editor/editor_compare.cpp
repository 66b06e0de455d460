// SPDX-License-Identifier: GPL-3.0-or-later
// The window that compares two programs, as an operator uses it.
#include "editor/CompareWindow.h"
#include "support/Required.h"

#include <QCheckBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

namespace
{
QByteArray lines(int first, int last)
{
    QByteArray text;
    for (int line = first; line <= last; ++line)
        text += "X" + QByteArray::number(line) + '\n';
    return text;
}

// A window over two programs, shown.
class Rig
{
public:
    Rig(const QByteArray& left, const QByteArray& right)
    {
        program_.appendReceived(left);
        window =
            new CompareWindow(program_, QStringLiteral("O1.nc"), right, QStringLiteral("/programs/O2.nc"), nullptr);
        window->show();
        window->activateWindow();
        require(QTest::qWaitForWindowActive(window), "the window does not become active");
    }
    ~Rig() { delete window; }

    void waitForResult() const
    {
        requireSoon([this] { return label("lblDifferences") != QLatin1String("Comparing..."); }, "no result");
    }
    QString label(const char* name) const { return window->findChild<QLabel*>(QLatin1String(name))->text(); }
    ProgramEditor* editor(const char* name) const { return window->findChild<ProgramEditor*>(QLatin1String(name)); }
    ProgramEditor* left() const { return editor("txtLeft"); }
    ProgramEditor* right() const { return editor("txtRight"); }
    int caretLine(const ProgramEditor* editor) const { return editor->lineNumber(editor->caret()); }
    static int firstRow(const ProgramEditor* editor)
    {
        return static_cast<int>(editor->SendScintilla(QsciScintilla::SCI_GETFIRSTVISIBLELINE));
    }
    // The sign in the margin of a line, from 1: "~" for the bar.
    static char sign(const ProgramEditor* editor, int line)
    {
        const unsigned marks = editor->markersAtLine(line - 1);
        return (marks & 1U << 2) ? '~' : (marks & 1U << 3) ? '+' : (marks & 1U << 4) ? '-' : ' ';
    }
    static QByteArray signsOf(const ProgramEditor* editor)
    {
        QByteArray signs;
        for (int line = 1; line <= editor->lines(); ++line)
            signs += sign(editor, line);
        return signs;
    }

    QPointer<CompareWindow> window;

private:
    ProgramEditor program_;
};
} // namespace

class CompareTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void marksWhatDiffers_data()
    {
        QTest::addColumn<QByteArray>("left");
        QTest::addColumn<QByteArray>("right");
        QTest::addColumn<QString>("count");
        QTest::addColumn<QByteArray>("leftSigns");
        QTest::addColumn<QByteArray>("rightSigns");
        const auto row = [](const char* name, const QByteArray& left, const QByteArray& right, const char* count,
                            const QByteArray& leftSigns, const QByteArray& rightSigns) {
            QTest::newRow(name) << left << right << QString::fromLatin1(count) << leftSigns << rightSigns;
        };
        row("received with CR LF, and a leader", QByteArray(9, '\0') + "%\r\nG0 X1.\r\n%\r\n\x14", "%\nG0X1.\n%",
            "No differences", "    ", "   ");
        row("changed, put in, left out", "A\nB\nC\nD\nE", "A\nX\nC\nY\nD", "3 differences", " ~ -+", " ~ +-");
        row("a line less at the end", "A\nB", "A", "1 difference", " +", "-");
        row("nothing at all", "", "A\nB", "1 difference", "-", "++");
    }

    void marksWhatDiffers()
    {
        QFETCH(QByteArray, left);
        QFETCH(QByteArray, right);
        const Rig rig(left, right);
        rig.waitForResult();
        QTEST(rig.label("lblDifferences"), "count");
        QFETCH(QByteArray, leftSigns);
        QFETCH(QByteArray, rightSigns);
        QTRY_COMPARE(Rig::signsOf(rig.left()), leftSigns); // marked as they are painted
        QTRY_COMPARE(Rig::signsOf(rig.right()), rightSigns);
        QVERIFY(rig.left()->isReadOnly() && rig.right()->isReadOnly());
    }

    void goesThroughTheDifferences()
    {
        const QByteArray left = lines(1, 1000);
        const Rig rig(left, "NEW\n" + lines(1, 499) + "Y\n" + lines(501, 999));
        rig.waitForResult();
        struct Place {
            Qt::KeyboardModifiers keys;
            const char* words;
            int left;
            int right;
        };
        // The first one is shown at once; after the last one comes the first.
        const Place places[] = {{Qt::NoModifier, "2 of 3", 500, 501},
                                {Qt::NoModifier, "3 of 3", 1000, 1001},
                                {Qt::NoModifier, "1 of 3", 1, 1},
                                {Qt::ShiftModifier, "3 of 3", 1000, 1001},
                                {Qt::ShiftModifier, "2 of 3", 500, 501}};
        QCOMPARE(rig.label("lblPlace"), QStringLiteral("1 of 3"));
        for (const auto& [keys, words, leftLine, rightLine] : places) {
            QTest::keyClick(rig.left(), Qt::Key_F7, keys);
            QCOMPARE(rig.label("lblPlace"), QString::fromLatin1(words));
            QCOMPARE(rig.caretLine(rig.left()), leftLine);
            QCOMPARE(rig.caretLine(rig.right()), rightLine);
            const auto depth = [&](const ProgramEditor* editor, int line) { return line - 1 - Rig::firstRow(editor); };
            QCOMPARE(depth(rig.left(), leftLine), depth(rig.right(), rightLine)); // side by side
        }
    }

    void goesOnFromTheOperatorsPlace()
    {
        const Rig rig(lines(1, 60), "A\n" + lines(2, 9) + "B\n" + lines(11, 19) + "C\n" + lines(21, 60));
        rig.waitForResult();
        for (int line = 1; line < 15; ++line)
            QTest::keyClick(rig.right(), Qt::Key_Down);
        QCOMPARE(rig.label("lblPlace"), QString());
        QTest::keyClick(rig.right(), Qt::Key_F7, Qt::ShiftModifier);
        QCOMPARE(rig.label("lblPlace"), QStringLiteral("2 of 3"));
        QTest::keyClick(rig.right(), Qt::Key_Down);
        QTest::keyClick(rig.right(), Qt::Key_F7);
        QCOMPARE(rig.label("lblPlace"), QStringLiteral("3 of 3"));
    }

    void blockNumbersCountIfWanted()
    {
        const Rig rig("N1 G0\nN2 G1", "N10 G0\nN20 G1");
        rig.waitForResult();
        QCOMPARE(rig.label("lblDifferences"), QStringLiteral("No differences"));
        QVERIFY(!rig.window->findChild<QPushButton*>("btnNextDifference")->isEnabled());
        auto* box = rig.window->findChild<QCheckBox*>("chkBlockNumbers");
        box->click();
        QTRY_COMPARE(rig.label("lblDifferences"), QStringLiteral("1 difference"));
        box->click();
        QTRY_COMPARE(rig.label("lblDifferences"), QStringLiteral("No differences"));
    }

    void scrollsBothTogether()
    {
        const Rig rig(lines(1, 2000), lines(1, 1000) + lines(5000, 5499) + lines(1001, 2000));
        rig.waitForResult();
        auto* const leftBar = rig.left()->verticalScrollBar();
        auto* const rightBar = rig.right()->verticalScrollBar();
        leftBar->setValue(1500);
        QCOMPARE(Rig::firstRow(rig.right()), 2000);
        rightBar->setValue(300);
        QCOMPARE(Rig::firstRow(rig.left()), 300);
        leftBar->setValue(leftBar->maximum());
        QCOMPARE(Rig::firstRow(rig.right()), rightBar->maximum());
        rightBar->setValue(0);
        QCOMPARE(Rig::firstRow(rig.left()), 0);
    }

    void closesWhileItCompares()
    {
        const Rig rig(lines(1, 300'000), lines(400'000, 700'000));
        QTest::keyClick(rig.left(), Qt::Key_Escape);
        QTRY_VERIFY(!rig.window);
    }
};

QTEST_MAIN(CompareTest)
#include "editor_compare.moc"
