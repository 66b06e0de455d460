// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Answers.h"
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "shell/frmChild.h"
#include "shell/MachineButton.h"
#include "shell/viewChild.h"

#include <QLabel>
#include <QMenu>
#include <QScrollArea>
#include <QScrollBar>

/// A long list of machines: how the operator finds one, and changes their order while they transfer.
class MachinesTest : public QObject
{
    Q_OBJECT
    static QString names()
    {
        QStringList all;
        for (qsizetype index = 1; index < g::mcIcons.size(); ++index)
            all << g::mcIcons[index]->MCNAME;
        return all.join(u',');
    }
    static QString stored()
    {
        QStringList all;
        for (const auto& line : Preferences::string("Varnock")->split(u'\n'))
            if (line.startsWith("MCNAME=")) all << line.mid(7);
        return all.join(u',');
    }
    static frmChild* undocked() { return qobject_cast<frmChild*>(Operator::find("btnDock")->window()); }
    static QString focused()
    {
        for (qsizetype index = 1; index < g::mcIcons.size(); ++index)
            if (QApplication::focusWidget() == mcIconAt(index)->button()) return g::mcIcons[index]->MCNAME;
        return {};
    }
    static std::shared_ptr<MachineRecord> machine(const QString& name, const QString& port = "1")
    {
        auto made = Shop::machineOn(port);
        made->MCNAME = name;
        return made;
    }

    // To the upper or lower half of another card.
    static void drag(Operator& op, int from, int to, bool toLowerHalf)
    {
        auto* window = op.window().windowHandle();
        const auto at = [&op](int index, int y) { return mcIconAt(index)->mapTo(&op.window(), QPoint(60, y)); };
        QTest::mousePress(window, Qt::LeftButton, {}, at(from, 30));
        QTest::mouseMove(window, at(from, 60));
        QTest::mouseMove(window, at(to, toLowerHalf ? 60 : 5));
        QTest::mouseRelease(window, Qt::LeftButton, {}, at(to, toLowerHalf ? 60 : 5));
    }

    static void chooseInCardMenu(int machine, const QString& text)
    {
        auto* button = mcIconAt(machine)->button();
        QContextMenuEvent wanted(QContextMenuEvent::Mouse, {5, 5}, button->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(button, &wanted);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        require(menu, "no menu of the card");
        for (auto* action : menu->actions())
            if (action->text().remove(u'&').startsWith(text))
                return QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
        require(false, "the menu has no " + text);
    }

private Q_SLOTS:
    void oneOfThirtyMachinesIsFound()
    {
        std::vector<std::shared_ptr<MachineRecord>> machines;
        for (int n = 1; n <= 30; ++n)
            machines.push_back(machine(QString(n % 10 ? "Mill %1" : "lathe %1").arg(n)));
        Shop::store(machines);
        Operator op;
        auto* area = op.find<QScrollArea>("scrIcons");
        QTRY_VERIFY(area->verticalScrollBar()->isVisible());
        mcIconAt(1)->button()->setFocus();
        for (const auto* name : {"lathe 10", "lathe 20", "lathe 30", "lathe 10"}) {
            op.press(Qt::Key_L);
            QCOMPARE(focused(), name);
            const auto* card = QApplication::focusWidget();
            QCOMPARE(card->visibleRegion().boundingRect().size(), card->size());
        }
        op.press(Qt::Key_Home);
        op.press(Qt::Key_PageDown);
        const int page = focused().mid(5).toInt();
        QVERIFY2(page > 5 && page < 20, qPrintable(focused()));
        auto* filter = op.find<QLineEdit>("txtFilter");
        QTest::keyClicks(filter, "LATHE");
        QVERIFY(!mcIconAt(1)->isVisible() && mcIconAt(30)->isVisible());
        filter->setFocus();
        op.press(Qt::Key_Down);
        op.press(Qt::Key_Down);
        QCOMPARE(focused(), "lathe 20");
        op.press(Qt::Key_Up, Qt::AltModifier); // among those shown
        QVERIFY(names().contains("Mill 9,lathe 20,lathe 10,Mill 11"));
        filter->setText("no such machine");
        QVERIFY(op.isShown("lblNoMatch"));
        op.click("btnAddMC"); // is shown, whatever the filter
        QVERIFY(mcIconAt(31)->isVisible() && filter->text().isEmpty());
    }

    void viewsPortsAndTransfersFollowTheirMachine()
    {
        PtyPair first, third;
        const QByteArray program = Shop::program(1500); // more than a line holds that nobody reads
        Shop::store({machine("A", first.devicePath()), machine("B"), machine("C", third.devicePath())});
        Operator op;
        op.send(1, program);
        op.click("btnUnDock");
        op.send(3, program);
        op.toFront();
        drag(op, 1, 3, true);
        QCOMPARE(names(), "B,C,A");
        QCOMPARE(stored(), names());
        QVERIFY(undocked()->iIndex == 3 && childViewAt(2)->iMcIndex == 2 && op.delegate().iCurrentMcIcon == 2);
        drag(op, 2, 1, false);
        QCOMPARE(names(), "C,B,A");
        op.press(Qt::Key_Down, Qt::AltModifier);
        QVERIFY(names() == "B,C,A" && focused() == "C");
        chooseInCardMenu(3, "Move up");
        QVERIFY(names() == "B,A,C" && stored() == names() && undocked()->iIndex == 2 &&
                op.delegate().iCurrentMcIcon == 3);
        op.answerNextMessage("Cancel");
        undocked()->close();
        QVERIFY2(op.lastMessage.startsWith("A is"), qPrintable(op.lastMessage));
        QCOMPARE(first.readAtLeast(Shop::onWire(program).size(), 30000), Shop::onWire(program));
        QCOMPARE(third.readAtLeast(Shop::onWire(program).size(), 30000), Shop::onWire(program));
        op.restart();
        QCOMPARE(names(), "B,A,C");
    }

    void copyHasTheSettingsButNeitherTheViewNorThePlace()
    {
        PtyPair line;
        auto mill = machine("Mill", line.devicePath());
        mill->MCMODE = "Okuma";
        mill->MCTXTOUT = 17; // not restored from the stored text
        mill->MCXMODEM0 = true;
        Shop::store({mill, machine("Saw")});
        Operator op;
        g::mcIcons[1]->MCTXTOUT = 17;
        op.choose(1, "btnRX");
        chooseInCardMenu(1, "Duplicate");
        QVERIFY(op.isShown("txtMCName") && !op.isShown("rt1")); // its port is to be changed first
        op.click("btnClose");
        chooseInCardMenu(1, "Duplicate");
        QCOMPARE(names(), "Mill,Mill copy 2,Mill copy,Saw");
        QCOMPARE(stored(), names());
        const auto& copy = *g::mcIcons[3];
        QVERIFY(copy.MCMODE == "Okuma" && copy.MCTXTOUT == 17 && copy.MCXMODEM0 && copy.MCINDEX == 3);
        QVERIFY(copy.MCPORT == line.devicePath() && !copy.MCISDOCKED && g::mcIcons[1]->MCISDOCKED);
    }

    void deletedMachinesComeBackInTheirPlaces()
    {
        const PtyPair line;
        const std::vector machines = {machine("A"), machine("B"), machine("C", line.devicePath())};
        machines[1]->MCMODE = "Okuma";
        machines[1]->MCXMODEM0 = true;
        Shop::store(machines);
        Operator op;
        g::saveAllMcSettings();
        const auto before = Preferences::string("Varnock");
        QVERIFY(!op.isShown("undoBar"));
        for (const int index : {2, 1}) {
            Answers answers({"Delete"});
            op.click("btnDeleteIcon", mcIconAt(index));
        }
        op.choose(1, "btnSetup"); // it is at another place when they come back
        QVERIFY(g::mcIcons.size() == 2 && g::mcIcons[1]->MCNAME == "C");
        op.click("btnUndo");
        op.click("btnUndo");
        QCOMPARE(Preferences::string("Varnock"), before);
        QVERIFY(!op.isShown("undoBar") && childViewAt(3)->iMcIndex == 3);
        Answers answers({"Delete"});
        op.click("btnDeleteIcon", mcIconAt(2));
        op.click("btnDismiss");
        QVERIFY(!op.isShown("undoBar") && g::mcIcons.size() == 3);
    }
};

QTEST_MAIN(MachinesTest)
#include "e2e_machines.moc"
