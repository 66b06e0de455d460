// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"

#include "shell/viewMC.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSettings>

class MachinesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void firstRunShowsOneMachine();
    void setupSurvivesARestart();
    void setupStoresWhatWasTyped_data();
    void setupStoresWhatWasTyped();
    void addedMachinesAreNumberedAndDeletionMovesTheRest();
    void cancelledDeletionKeepsTheMachine();
    void scrollingStopsAtBothEnds();
    void brokenSettingsStartCalmly_data();
    void brokenSettingsStartCalmly();
};

void MachinesTest::firstRunShowsOneMachine()
{
    QSettings(QStringLiteral("Varnock"), QStringLiteral("Varnock")).clear();
    Operator op;
    QCOMPARE(g::mcIcons.size(), 2);
    QVERIFY(mcIconAt(1)->isVisible());
    QCOMPARE(mcIconAt(1)->MCNAME, QStringLiteral("CNC1"));
    QVERIFY(op.isShown(QStringLiteral("imgBogLogo")));
}

void MachinesTest::setupSurvivesARestart()
{
    cncsim::SimulatedControl control({});
    const QString port = QString::fromStdString(control.devicePath());
    Shop::storeMachines({std::make_shared<MachineRecord>().get()});
    Operator op;
    op.setUp(1, port, QStringLiteral("Okuma"), 2, 2, true);
    op.restart();
    const auto& machine = *g::mcIcons.at(1);
    QCOMPARE(machine.MCPORT, port);
    QCOMPARE(machine.MCMODE, QStringLiteral("Okuma"));
    QCOMPARE(machine.MCFLOW, 2);
    QCOMPARE(machine.MCDBPAR, 2);
    QVERIFY(machine.MCWAIT);
    // The port can be opened now, and the form shows what was stored.
    op.choose(1, QStringLiteral("btnSetup"));
    QTRY_COMPARE(op.find<QComboBox>(QStringLiteral("cboPorts"))->currentText(), port);
    QCOMPARE(op.find<QComboBox>(QStringLiteral("cboMode"))->currentText(), QStringLiteral("Okuma"));
}

void MachinesTest::setupStoresWhatWasTyped_data()
{
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("listed");
    QTest::addColumn<QString>("typed");
    const auto row = [](const char* box, const char* listed, const char* typed) {
        QTest::addRow("%s %s", box, typed)
            << QString::fromLatin1(box) << QString::fromLatin1(listed) << QString::fromLatin1(typed);
    };
    row("cboPorts", "/dev/ttyUSB10", "/dev/ttyUSB1"); // completed, it would be another machine's device
    row("cboMode", "Fanuc", "fan");
    row("cboMode", "Fanuc", "fanuc");
    row("cboEOB", "CRLF", "CR");
}

void MachinesTest::setupStoresWhatWasTyped()
{
    QFETCH(QString, box);
    QFETCH(QString, listed);
    QFETCH(QString, typed);
    Shop::storeMachines({std::make_shared<MachineRecord>().get()});
    Operator op;
    op.choose(1, QStringLiteral("btnSetup"));
    op.click(QStringLiteral("btnSetupFailed"));
    auto* combo = op.find<QComboBox>(box);
    combo->clear();
    combo->addItem(listed);
    combo->setFocus();
    QTRY_VERIFY(combo->lineEdit()->hasFocus());
    combo->lineEdit()->selectAll();
    QTest::keyClicks(combo->lineEdit(), typed);
    QTest::keyClick(combo->lineEdit(), Qt::Key_Tab);
    op.click(QStringLiteral("btnSave"));
    QCOMPARE(combo->currentText(), typed);
    QVERIFY(SettingsText::write({g::mcIcons[1].get()}).contains(u'=' + typed + u'\n'));
}

void MachinesTest::addedMachinesAreNumberedAndDeletionMovesTheRest()
{
    Shop::forgetMachines();
    Operator op;
    op.click(QStringLiteral("btnAddMC"));
    op.click(QStringLiteral("btnAddMC"));
    QCOMPARE(g::mcIcons.size(), 3);
    QCOMPARE(mcIconAt(2)->MCNAME, QStringLiteral("CNC2"));
    op.answerNextMessage(QStringLiteral("Delete"));
    op.clickIn(mcIconAt(1), QStringLiteral("btnDeleteIcon"));
    QCOMPARE(op.lastMessage, QStringLiteral("Delete the current MC Icon?"));
    op.restart();
    QCOMPARE(g::mcIcons.size(), 2);
    QCOMPARE(mcIconAt(1)->MCNAME, QStringLiteral("CNC2"));
    QCOMPARE(mcIconAt(1)->MCINDEX, 1);
}

void MachinesTest::cancelledDeletionKeepsTheMachine()
{
    Shop::storeMachines({std::make_shared<MachineRecord>().get()});
    Operator op;
    op.answerNextMessage(QStringLiteral("Cancel"));
    op.clickIn(mcIconAt(1), QStringLiteral("btnDeleteIcon"));
    QCOMPARE(op.lastMessage, QStringLiteral("Delete the current MC Icon?"));
    QCOMPARE(g::mcIcons.size(), 2);
    QVERIFY(mcIconAt(1)->isVisible());
}

void MachinesTest::scrollingStopsAtBothEnds()
{
    const MachineRecord machine;
    Shop::storeMachines(std::vector<const MachineRecord*>(20, &machine));
    Operator op;
    const auto top = [] { return mcIconAt(1)->mapTo(mcIconAt(1)->window(), QPoint()).y(); };
    const int atStart = top();
    op.click(QStringLiteral("btnUp"));
    QTest::qWait(60);
    QCOMPARE(top(), atStart);
    op.click(QStringLiteral("btnDn"));
    QTRY_COMPARE(top(), atStart - 50);
    for (int click = 0; click < 60; ++click)
        op.click(QStringLiteral("btnDn"));
    auto* list = op.find<QWidget>(QStringLiteral("scrIcons"));
    const QPoint lastRow(0, mcIconAt(20)->height() - 1);
    QTRY_VERIFY_WITH_TIMEOUT(list->rect().contains(mcIconAt(20)->mapTo(list, lastRow)), 20000);
}

void MachinesTest::brokenSettingsStartCalmly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("machines");
    const MachineRecord machine;
    const QString whole = SettingsText::write({&machine, &machine});
    QTest::newRow("empty text") << QString() << 0;
    QTest::newRow("no machines") << QStringLiteral("[END]\n") << 0;
    QTest::newRow("end missing: the last machine is lost") << QString(whole).remove(QStringLiteral("[END]\n")) << 1;
    QTest::newRow("garbage") << QString(QChar(u'\x7F')).repeated(5000) << 0;
    QTest::newRow("a million lines") << QStringLiteral("MCNAME=x\n").repeated(1'000'000) + whole << 2;
    QTest::newRow("line ends of another system") << QString(whole).replace(u'\n', QStringLiteral("\r\n")) << 2;
}

void MachinesTest::brokenSettingsStartCalmly()
{
    QFETCH(QString, text);
    QFETCH(int, machines);
    Preferences::setString(QStringLiteral("Varnock"), text);
    Operator op;
    QCOMPARE(g::mcIcons.size(), machines + 1);
    // The operator can go on: a new machine gets the next place and is shown.
    op.click(QStringLiteral("btnAddMC"));
    QCOMPARE(mcIconAt(machines + 1)->MCNAME, QStringLiteral("CNC%1").arg(machines + 1));
    QVERIFY(mcIconAt(machines + 1)->isVisible());
}

QTEST_MAIN(MachinesTest)
#include "e2e_machines.moc"
