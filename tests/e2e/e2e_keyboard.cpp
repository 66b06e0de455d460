// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"

#include "shell/MachineButton.h"
#include "shell/viewMC.h"

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>

using cncsim::SimulatedControl;

/// An operator without a mouse: every step is a key that goes where the focus is.
class KeyboardTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sendsStopsAndContinuesWithKeysAlone();
    void waitIsEndedWithKeysAlone();

private:
    static void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static void pickProgram(Operator& op, const QString& path);
    static QString state(Operator& op);

    QTemporaryDir dir_;
};

void KeyboardTest::press(int key, Qt::KeyboardModifiers modifiers)
{
    auto* popup = QApplication::activePopupWidget();
    QWidget* window = popup ? popup : QApplication::activeWindow();
    QVERIFY(window);
    QTest::keyClick(window->focusWidget() ? window->focusWidget() : window, static_cast<Qt::Key>(key), modifiers);
}

void KeyboardTest::pickProgram(Operator& op, const QString& path)
{
    QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeWindow()));
    auto* name = qobject_cast<QLineEdit*>(QApplication::activeWindow()->focusWidget());
    QVERIFY2(name, "the file dialog does not begin at the file name");
    QTest::keyClicks(name, path);
    QTRY_COMPARE(name->text(), path);
    press(Qt::Key_Return);
    QTRY_VERIFY(!QApplication::activeModalWidget() && !QApplication::activePopupWidget()); // names on offer, too
    op.window().activateWindow(); // what a window manager does when a dialog goes
    QVERIFY(QTest::qWaitForWindowActive(&op.window()));
}

QString KeyboardTest::state(Operator& op)
{
    const auto* label = op.find<QLabel>(QStringLiteral("lblTransferState"));
    return label ? label->text() : QString();
}

void KeyboardTest::sendsStopsAndContinuesWithKeysAlone()
{
    const QByteArray program = Shop::program(600);
    cncsim::Settings settings;
    settings.framing.type = cncsim::ControlType::Fanuc;
    settings.xonXoff = true;
    settings.readRate = 4000; // slow enough for a stop half-way
    SimulatedControl first({}), second(settings);
    const auto one = Shop::machineOn(first.devicePath()), two = Shop::machineOn(second.devicePath(), "Fanuc");
    Shop::storeMachines({one.get(), two.get()});
    Operator op;
    op.window().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&op.window()));

    for (int tabs = 0; tabs < 20 && !qobject_cast<MachineButton*>(op.window().focusWidget()); ++tabs)
        press(Qt::Key_Tab);
    QCOMPARE(op.window().focusWidget(), mcIconAt(1)->button());
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    QTRY_VERIFY(QApplication::activePopupWidget());
    press(Qt::Key_Return); // Send is the first choice
    pickProgram(op, Shop::writeFile(dir_, QStringLiteral("part.nc"), program));

    press(Qt::Key_S, Qt::AltModifier);
    QTRY_VERIFY(second.report().received.size() > 3000);
    press(Qt::Key_T, Qt::AltModifier);
    QTRY_VERIFY2(state(op).startsWith(QLatin1String("Stopped at line ")), qPrintable(state(op)));
    QVERIFY(!second.report().isComplete);

    press(Qt::Key_S, Qt::AltModifier);
    QTRY_VERIFY_WITH_TIMEOUT(second.report().isComplete, 30000);
    QCOMPARE(Shop::bytesOf(second.report().problem), QByteArray());
    QCOMPARE(Shop::bytesOf(second.report().program), QByteArray(program).replace("\n", "\r\n"));
    QCOMPARE(first.report().received.size(), std::size_t{0});
    QTRY_VERIFY2(state(op).startsWith(QLatin1String("Sent: ")), qPrintable(state(op)));

    press(Qt::Key_W, Qt::ControlModifier);
    QTRY_VERIFY(!op.isShown(QStringLiteral("rt1")));
}

void KeyboardTest::waitIsEndedWithKeysAlone()
{
    cncsim::Settings settings;
    settings.silenceMs = 300;
    SimulatedControl control(settings);
    const auto machine = Shop::machineOn(control.devicePath());
    machine->MCWAIT = true;
    Shop::storeMachines({machine.get()});
    Operator op;
    op.window().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&op.window()));
    for (int tabs = 0; tabs < 20 && !qobject_cast<MachineButton*>(op.window().focusWidget()); ++tabs)
        press(Qt::Key_Tab);
    press(Qt::Key_Return);
    QTRY_VERIFY(QApplication::activePopupWidget());
    press(Qt::Key_S);
    pickProgram(op, Shop::writeFile(dir_, QStringLiteral("wait.nc"), "G0 X1\nM30\n"));
    press(Qt::Key_S, Qt::AltModifier);
    QTRY_VERIFY(op.isShown(QStringLiteral("btnSendNow")));
    QCOMPARE(control.report().received.size(), std::size_t{0});
    press(Qt::Key_N, Qt::AltModifier);
    QTRY_COMPARE(Shop::bytesOf(control.report().received), QByteArray("G0 X1\r\nM30\r\n"));
}

QTEST_MAIN(KeyboardTest)
#include "e2e_keyboard.moc"
