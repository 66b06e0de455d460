// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "simulator/SimulatedControl.h"

#include "editor/ProgramEditor.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLabel>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTableView>

/// What the operator finds in the history is what went over the lines.
class HistoryTest : public QObject
{
    Q_OBJECT
    static QDir folder() { return QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)); }

    // The rows of the open page: machine, direction, program and outcome.
    static QStringList rows()
    {
        QStringList texts;
        const auto* table = Operator::find<QTableView>("tblHistory");
        for (int row = 0; table && row < table->model()->rowCount(); ++row) {
            QStringList cells;
            for (const int column : {1, 2, 3, 4})
                cells << table->model()->index(row, column).data().toString();
            texts << cells.join(u'|');
        }
        return texts;
    }

private Q_SLOTS:
    void init() { folder().removeRecursively(); }

    void sentAndReceivedProgramsAppear()
    {
        cncsim::Settings punching;
        punching.punchProgram = "%\r\nO77\r\nG0 X1\r\nM30\r\n%\r\n";
        cncsim::SimulatedControl mill({}), lathe(punching);
        const auto first = Shop::machineOn(QString::fromStdString(mill.devicePath()));
        const auto second = Shop::machineOn(QString::fromStdString(lathe.devicePath()));
        first->MCNAME = "Mill";
        second->MCNAME = "Lathe";
        Shop::store({first, second});
        Operator op;
        const QByteArray program = Shop::program(20);
        op.click("btnAllHistory");
        QTRY_VERIFY(op.isShown("lblEmpty"));
        op.toFront();
        op.send(1, program);
        QTRY_COMPARE(rows(), QStringList("Mill|Sent|program.nc|Finished")); // the open page follows
        op.toFront();
        op.choose(2, "btnRX");
        lathe.punch();
        QTRY_COMPARE(rows().size(), 2);
        QCOMPARE(rows().first(), "Lathe|Received|O77|Finished");

        op.choose(1, "btnHistory"); // that machine's alone
        QTRY_COMPARE(rows(), QStringList("Mill|Sent|program.nc|Finished"));
        QVERIFY(op.find<QLabel>("lblDetails")
                    ->text()
                    .contains(QString::fromLatin1(
                        QCryptographicHash::hash(Shop::onWire(program), QCryptographicHash::Sha256).toHex())));
        op.toFront();
        op.send(1, Shop::program(200));
        op.write("N1 G0\n"); // the file has changed since
        QTimer answer;       // only when the transfer has ended and the rows were read again
        answer.callOnTimeout([&answer] {
            const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || rows().size() < 2) return;
            answer.stop();
            for (auto* button : box->buttons())
                if (button->text().remove(u'&') == "Stop") QTest::mouseClick(button, Qt::LeftButton);
        });
        answer.start(5);
        op.click("btnOpenAgain");
        QTRY_VERIFY(op.isShown("btnSend"));
        QCOMPARE(op.find<ProgramEditor>("rt1", &op.window())->wholeText(), QByteArray("N1 G0\n"));
        op.restart();
        op.click("btnAllHistory");
        QTRY_COMPARE(rows().size(), 3);
    }

    void damageIsToldAndHoldsNobodyUp()
    {
        QVERIFY(QDir().mkpath(folder().path()));
        QFile file(folder().filePath("history.sqlite"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("no database") > 0);
        file.close();
        cncsim::SimulatedControl mill({});
        Shop::store({Shop::machineOn(QString::fromStdString(mill.devicePath()))});
        Operator op;
        QTRY_VERIFY(op.isShown("noticeBox"));
        QVERIFY(!QApplication::activeModalWidget());
        op.toFront();
        op.send(1, Shop::program(5));
        QVERIFY(op.isShown("noticeBox"));
        op.click("btnAllHistory");
        QTRY_COMPARE(rows().size(), 1);
        QCOMPARE(folder().entryList({"history-damaged-*"}, QDir::Files).size(), 1);
    }
};

QTEST_MAIN(HistoryTest)
#include "e2e_history.moc"
