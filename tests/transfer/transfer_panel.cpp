// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QRegularExpression>
#include <QUrl>

#include <sys/stat.h>

class PanelTest : public QObject
{
    Q_OBJECT

    static bool isEnabled(const TransferRig& rig, const char* name)
    {
        return rig.view->findChild<QWidget*>(name)->isEnabled();
    }
    static QString path(const TransferRig& rig) { return rig.view->findChild<QLineEdit*>("txtPath")->text(); }

private Q_SLOTS:
    void freshViewIsIdle();
    void openedProgramIsLockedAndRewound();
    void unlockedProgramCanBeEditedAndSent();
    void whatCannotBeReadChangesNothing();
    void newEmptiesTextAndPath();
    void openDialogOpensTheChosenFile();
    void openingLeavesTheWaitBoxAsItWas();
    void progressFollowsIndexAndMaximum_data();
    void progressFollowsIndexAndMaximum();
    void linesAreCounted();
    void summaryNamesTheLine_data();
    void summaryNamesTheLine();
    void changedRecordReachesTheFraming();
    void everyControlCanBeNamedAloud();
};

void PanelTest::freshViewIsIdle()
{
    const viewTX view;
    QCOMPARE(view.txState.State, viewTX::TxState::txState_idle);
    QCOMPARE(view.mode, 0);
    QVERIFY(view.isSendMode() && !view.dncRunning() && !view.textLocked());
}

void PanelTest::openedProgramIsLockedAndRewound()
{
    TransferRig rig;
    rig.start();
    rig.open("G0\r\nG1\r\n");
    rig.editor->moveCaretTo(4);
    rig.chooseStart(1);
    rig.open("O1\r\n\r\nM30");
    QCOMPARE(rig.editor->wholeText(), QByteArray("O1\n\nM30"));
    QVERIFY(path(rig).endsWith("/program.nc"));
    QVERIFY(rig.view->textLocked() && rig.editor->isReadOnly());
    QVERIFY(!isEnabled(rig, "btnNew") && !isEnabled(rig, "btnFolder"));
    QCOMPARE(rig.editor->caret(), 0);
    QCOMPARE(rig.view->findChild<QComboBox*>("cbo1")->currentIndex(), 0);
}

void PanelTest::unlockedProgramCanBeEditedAndSent()
{
    TransferRig rig;
    rig.start();
    rig.open("G0\n");
    QTest::keyClicks(rig.editor, "X");
    QCOMPARE(rig.editor->wholeText(), QByteArray("G0\n"));
    rig.click("btnLock");
    QVERIFY(isEnabled(rig, "btnNew") && isEnabled(rig, "btnFolder"));
    QTest::keyClicks(rig.editor, "N5 ");
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), QByteArray("N5 G0\r\n"));
    QVERIFY(!rig.editor->isReadOnly());
}

void PanelTest::whatCannotBeReadChangesNothing()
{
    TransferRig rig;
    rig.start();
    rig.open("G0\n");
    const QString before = path(rig);
    rig.view->openFile(QDir::tempPath() + "/no such file");
    rig.view->openFile(QDir::tempPath());
    const QTemporaryDir folder;
    const QByteArray pipe = folder.filePath("pipe").toLocal8Bit(); // would be waited for as long as nobody writes
    QVERIFY(::mkfifo(pipe.constData(), 0600) == 0);
    rig.view->openFile(QString::fromLocal8Bit(pipe));
    rig.view->openFile("/dev/zero"); // would be read without end
    QCOMPARE(rig.editor->wholeText(), QByteArray("G0\n"));
    QCOMPARE(path(rig), before);
    QVERIFY(!rig.isShown("boxWaitForCNC"));
}

void PanelTest::newEmptiesTextAndPath()
{
    TransferRig rig;
    rig.start();
    rig.open("G0\n");
    rig.click("btnLock");
    rig.click("btnNew");
    QCOMPARE(rig.editor->textSize(), 0);
    QVERIFY(path(rig).isEmpty() && !rig.view->textLocked());
}

void PanelTest::openDialogOpensTheChosenFile()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("O7.nc"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("O7\r\n") == 4);
    file.close();
    TransferRig rig;
    rig.machine->MCOUTDIR = QUrl::fromLocalFile(folder.path()).toString();
    rig.start();
    rig.click("btnFolder");
    auto* dialog = rig.view->findChild<QFileDialog*>("openDialog");
    QVERIFY(dialog && dialog->isVisible());
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    QTest::keyClicks(name, "O7.nc");
    QTest::keyClick(name, Qt::Key_Return);
    QTRY_COMPARE(rig.editor->wholeText(), QByteArray("O7\n"));
}

void PanelTest::openingLeavesTheWaitBoxAsItWas()
{
    TransferRig rig;
    rig.start();
    const QString before = rig.text("lblWaitForMC");
    rig.open("G0\n");
    QCOMPARE(rig.text("lblWaitForMC"), before);
    QVERIFY(!rig.isShown("boxWaitForCNC"));
    QVERIFY(!rig.view->findChild<QWidget*>("btnSendNow")->isHidden());
}

void PanelTest::progressFollowsIndexAndMaximum_data()
{
    QTest::addColumn<double>("maximum");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<double>("value");
    QTest::newRow("half") << 50.0 << 25 << "50%" << 25.0;
    QTest::newRow("rounded down") << 1000.0 << 999 << "99%" << 999.0;
    QTest::newRow("no maximum") << 0.0 << 1 << "10%" << 1.0;
    QTest::newRow("small maximum") << 5.0 << 5 << "50%" << 5.0;
    QTest::newRow("beyond the maximum") << 50.0 << 100 << "200%" << 100.0;
    QTest::newRow("start") << 50.0 << 0 << "0%" << 0.0;
}

void PanelTest::progressFollowsIndexAndMaximum()
{
    QFETCH(int, index);
    QFETCH(double, maximum);
    TransferRig rig;
    rig.start();
    rig.view->setPBarsHidden(false);
    rig.machine->maximum = maximum;
    rig.view->iIndexCurrentLine = index;
    rig.view->movePBars();
    QTEST(rig.text("txtPCent"), "shown");
    QTEST(rig.machine->value, "value");
    QVERIFY(rig.view->findChild<QWidget*>("boxPBInner")->width() <=
            rig.view->findChild<QWidget*>("boxPBOuter")->width());
}

void PanelTest::linesAreCounted()
{
    TransferRig rig;
    rig.start();
    QCOMPARE(rig.view->getNumLines(), 1.0);
    rig.open(QByteArray(5000, 'a') + "\nb\nc"); // a long line is one line
    QCOMPARE(rig.view->getNumLines(), 3.0);
}

void PanelTest::summaryNamesTheLine_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<int>("dataFormat");
    QTest::addColumn<QString>("part");
    QTest::newRow("8 bits") << "/dev/ttyUSB0" << 0 << "ttyUSB0,9600,n,8,2";
    QTest::newRow("7 bits") << "/dev/cu.usb" << 1 << "cu.usb,9600,n,7,2";
    QTest::newRow("even parity") << "COM1" << 2 << "COM1,9600,e,7,2";
    QTest::newRow("only a leading /dev/ goes") << "/x/dev/y" << 0 << "/x/dev/y,9600";
    QTest::newRow("no port") << "" << 0 << "NONE";
}

void PanelTest::summaryNamesTheLine()
{
    QFETCH(QString, port);
    QFETCH(int, dataFormat);
    QFETCH(QString, part);
    TransferRig rig;
    rig.start();
    rig.machine->MCPORT = port;
    rig.machine->MCBAUD = 9600;
    rig.machine->MCDBPAR = dataFormat;
    rig.machine->MCSBITS = 2;
    rig.view->machineChanged();
    QVERIFY2(rig.text("lblMcParas").contains(part), qPrintable(rig.text("lblMcParas")));
}

void PanelTest::changedRecordReachesTheFraming()
{
    TransferRig rig;
    rig.start();
    rig.open("G0\n");
    rig.machine->MCTXEOB = "LF";
    rig.machine->MCTXSOT = "37";
    rig.machine->MCTXEOT = "4";
    rig.view->machineChanged();
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), QByteArray("%G0\n\4"));
}

void PanelTest::everyControlCanBeNamedAloud()
{
    TransferRig rig;
    rig.start();
    const auto buttons = rig.view->findChildren<QAbstractButton*>(QRegularExpression("^btn"));
    QVERIFY(buttons.size() >= 11);
    for (const auto* button : buttons)
        QVERIFY2(!button->accessibleName().isEmpty() || !button->text().isEmpty(), qPrintable(button->objectName()));
    for (const char* name : {"rt1", "cbo1", "txtPath", "btnSend", "btnStop", "btnRewind", "btnFolder", "btnSave"}) {
        const auto* widget = rig.view->findChild<QWidget*>(name);
        QVERIFY2(!widget->accessibleName().isEmpty(), name);
        QVERIFY2(widget->focusPolicy() & Qt::TabFocus, name);
    }
}

QTEST_MAIN(PanelTest)
#include "transfer_panel.moc"
