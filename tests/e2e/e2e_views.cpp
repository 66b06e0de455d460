// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "shell/frmChild.h"
#include "shell/MachineButton.h"
#include "shell/viewChild.h"

#include <QKeyEvent>
#include <QLabel>

/// Where views are, how the operator gets to them, and where the keyboard is then.
class ViewsTest : public QObject
{
    Q_OBJECT
    static frmChild* undocked()
    {
        for (auto* window : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<frmChild*>(window); found && found->isVisible()) return found;
        return nullptr;
    }
    static QString focus()
    {
        return QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
    }
    static bool isFocused(int machine) { return QApplication::focusWidget() == mcIconAt(machine)->button(); }

    // A press as the window system reports it: an open popup gets it, wherever it lands.
    static void pressOn(Operator& op, const QWidget& widget)
    {
        const QPoint middle = widget.mapTo(&op.window(), widget.rect().center());
        QTest::mouseClick(op.window().windowHandle(), Qt::LeftButton, {}, middle);
    }

    const QByteArray program_ = Shop::program(1500); // more than a line holds that nobody reads
    const QByteArray onWire_ = Shop::onWire(program_);

private Q_SLOTS:
    void addedMachineIsSetUpAtOnceAndTriedUntilItsPortIsThere()
    {
        Preferences::setString("Varnock", "");
        PtyPair line;
        const QTemporaryDir dir;
        const QString port = dir.filePath("adapter");
        Operator op;
        op.click("btnAddMC");
        QVERIFY(op.isShown("txtMCName") && !op.isShown("btnSetupFailed"));
        QTRY_COMPARE(focus(), "txtMCName");
        op.setPort(port);
        op.press(Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(isFocused(1));

        op.choose(1, "btnRX"); // the adapter is not plugged in yet
        op.click("btnTryAgain");
        QVERIFY(op.isShown("btnTryAgain") && focus() == "btnTryAgain");
        QVERIFY(QFile::link(line.devicePath(), port));
        op.press(Qt::Key_Return);
        QVERIFY(op.isShown("rt1") && !op.isShown("btnTryAgain"));
        line.write("N10 X1\r\n");
        QTRY_COMPARE(op.find<QLabel>("lblTransferState")->text(), "Receiving");
    }

    void enterSendsAProgramThatWasOpenedAndKeepsAViewThatWorks()
    {
        PtyPair line;
        Shop::store({Shop::machineOn(line.devicePath())});
        Operator op;
        op.open(1, program_);
        op.toFront();
        QTRY_COMPARE(focus(), "btnSend");
        QKeyEvent stillHeld(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, {}, true); // from the file dialog
        QApplication::sendEvent(QApplication::focusWidget(), &stillHeld);
        QVERIFY(op.isShown("btnSend"));
        op.press(Qt::Key_Return);
        QVERIFY(op.isShown("btnStop"));
        const auto* view = childViewAt(1);
        mcIconAt(1)->button()->setFocus();
        for (const auto key : {Qt::Key_Return, Qt::Key_Return, Qt::Key_Return})
            op.press(key);
        QVERIFY(op.isShown("btnStop") && childViewAt(1) == view && !QApplication::activeModalWidget());
        QCOMPARE(line.readAtLeast(onWire_.size(), 30000), onWire_);
    }

    void undockedViewIsFoundAndDockedWhileItSends()
    {
        PtyPair first, second;
        Shop::store({Shop::machineOn(first.devicePath()), Shop::machineOn(second.devicePath())});
        Operator op;
        op.send(1, program_);
        op.click("btnUnDock");
        QVERIFY(undocked() && op.isShown("btnShowWindow") && !undocked()->isAncestorOf(op.find("btnShowWindow")));
        op.choose(2, "btnCloseMenu");
        QVERIFY(!op.isShown("btnShowWindow"));
        undocked()->showMinimized();
        op.click("btnMC", mcIconAt(1));
        QVERIFY(!undocked()->isMinimized() && QApplication::activePopupWidget()); // beneath the menu
        op.click("btnShowView");
        QTRY_VERIFY(undocked()->isActiveWindow());
        op.click("btnDock", undocked());
        QVERIFY(!undocked() && op.isShown("btnUnDock") && op.isShown("btnStop"));
        QTRY_VERIFY(op.window().isActiveWindow());
        op.click("btnUnDock");
        op.choose(1, "btnDockView");
        QVERIFY(!undocked() && op.isShown("btnUnDock"));
        op.click("btnUnDock");
        op.click("btnDockHere");
        QVERIFY(!undocked() && op.isShown("btnUnDock") && !op.isShown("btnDockHere"));
        QCOMPARE(first.readAtLeast(onWire_.size(), 30000), onWire_);
        QTRY_VERIFY(op.isShown("btnSend"));
        QCOMPARE(second.read(), QByteArray());
    }

    void clickOnAnotherCardWhileTheMenuIsOpenGoesThere()
    {
        const auto lathe = Shop::machineOn("2");
        lathe->MCNAME = "Lathe";
        Shop::store({Shop::machineOn("1"), lathe});
        Operator op;
        op.click("btnMC", mcIconAt(1));
        pressOn(op, *mcIconAt(2));
        QTRY_VERIFY(mcIconAt(2)->_isActive && QApplication::activePopupWidget());
        QCOMPARE(op.find<QLabel>("lblMachine", QApplication::activePopupWidget())->text(), "Lathe");
        pressOn(op, *mcIconAt(2)); // its own card only closes it
        QTRY_VERIFY(!QApplication::activePopupWidget());
    }
};

QTEST_MAIN(ViewsTest)
#include "e2e_views.moc"
