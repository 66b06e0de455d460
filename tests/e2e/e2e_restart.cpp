// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "simulator/SimulatedControl.h"

#include "editor/ProgramEditor.h"
#include "transfer/StartBlockTable.h"

#include <QLabel>
#include <QLineEdit>

/// A tool has broken: the operator stops, goes back in the program, looks over the start blocks, changes them and
/// sends.
class RestartTest : public QObject
{
    Q_OBJECT
    static QPoint cell(const StartBlockTable& table, int row)
    {
        return table.visualItemRect(table.item(row, 0)).center();
    }

    // As an operator does: a double click, then the new text and Enter.
    static void typeBlock(StartBlockTable& table, int row, const QString& block)
    {
        QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, cell(table, row));
        QTest::mouseDClick(table.viewport(), Qt::LeftButton, {}, cell(table, row));
        auto* field = table.findChild<QLineEdit*>();
        require(field && field->isVisible(), "no field to type a block into");
        field->selectAll();
        QTest::keyClicks(field, block);
        QTest::keyClick(field, Qt::Key_Return);
    }

private Q_SLOTS:
    void controlGetsTheEditedBlocksAndTheRestOfTheProgram()
    {
        cncsim::SimulatedControl control({});
        const auto machine = Shop::machineOn(QString::fromStdString(control.devicePath()), "Fanuc");
        Shop::store({machine});
        Operator op;
        const QByteArray program = "O1234\nG21 G90 G54\nT1 M6\nS3000 M3\nG0 X0. Y0.\nG43 H1 Z50.\nG1 Z-1. F200\n" +
                                   Shop::program(500) + "M30\n";
        constexpr int line = 12; // 1-based
        const QByteArray leader(20, '\0'), fromTheTop = leader + "%\r\n" + Shop::onWire(program) + "%\r\n";
        const auto received = [&control] { return QByteArray::fromStdString(control.report().received); };
        op.send(1, program);
        QTRY_VERIFY(control.receivedBytes() > 1000);
        op.click("btnStop");

        op.toFront();
        auto* editor = op.find<ProgramEditor>("rt1");
        editor->setFocus();
        op.press(Qt::Key_Home, Qt::ControlModifier);
        for (int at = 1; at < line; ++at)
            op.press(Qt::Key_Down);
        op.press(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_VERIFY(op.isShown("btnSendRestart") && op.find("btnSendRestart")->isEnabled());
        auto* table = op.find<StartBlockTable>("tblBlocks");
        const auto proposed = table->blocks();
        typeBlock(*table, 0, "G21 (TYPED)");
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell(*table, 1));
        op.click("btnRemoveBlock");
        auto blocks = proposed;
        blocks[0] = "G21 (TYPED)\n";
        blocks.removeAt(1);
        QCOMPARE(table->blocks(), blocks);
        op.click("btnSendRestart");
        QTRY_VERIFY_WITH_TIMEOUT(op.isShown("btnSend"), 30000);

        const qsizetype rest = editor->lineNumbered(line).start;
        const QByteArray restarted = leader + "%\r\n" + Shop::onWire(blocks.join(QString()).toLatin1()) +
                                     Shop::onWire(program.mid(rest)) + "%\r\n";
        QTRY_VERIFY(received().endsWith("M30\r\n%\r\n"));
        const QByteArray all = received();
        QCOMPARE(all.last(std::min(all.size(), restarted.size())), restarted);
        QVERIFY(fromTheTop.startsWith(all.chopped(restarted.size()))); // the stopped send, and nothing between them
        QCOMPARE(editor->wholeText(), program);

        op.choose(1, "btnHistory");
        QTRY_VERIFY(op.isShown("lblDetails") && op.find<QLabel>("lblDetails")->text().contains("from line 12"));
    }
};

QTEST_MAIN(RestartTest)
#include "e2e_restart.moc"
