// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/MonkeyTest.h"

#include "shell/frmChild.h"
#include "shell/viewChild.h"
#include "shell/viewMC.h"
#include "transfer/ProgramEditor.h"
#include "transfer/viewTX.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

#include <algorithm>

namespace
{
constexpr auto stoppedAt = "monkeyStoppedAt"; // caret's place when a send was stopped
constexpr qlonglong nowhere = -1;
} // namespace

// What would change the bytes on the line, or the line itself, would make every check meaningless.
bool MonkeyTest::isHarmless(const QWidget& widget)
{
    static const QStringList left = {"cboPorts", "cboFlow", "cboDBPar", "cboBaud",
                                     "cboMode",  "cboEOB",  "txtSOT",   "txtEOT"};
    for (const auto* part = &widget; part; part = part->parentWidget())
        if (left.contains(part->objectName())) return false;
    return true;
}

int MonkeyTest::weight(const QWidget& widget)
{
    static const QHash<QString, int> weights = {{"btnMC", 4},     {"btnTX", 12},      {"btnSend", 25}, {"btnStop", 12},
                                                {"btnRewind", 3}, {"btnAddMC", 2},    {"rt1", 8},      {"btnSave", 3},
                                                {"btnUnDock", 4}, {"btnSendNow", 12}, {"btnClose", 3}, {"cbo1", 4}};
    if (widget.objectName() == QLatin1String("btnAddMC") && g::mcIcons.size() > 6) return 0;
    return weights.value(widget.objectName(), 2);
}

QList<QWidget*> MonkeyTest::touchable() const
{
    QList<QWidget*> found;
    auto tops = QApplication::topLevelWidgets();
    if (auto* popup = QApplication::activePopupWidget()) tops = {popup};
    for (auto* top : tops) {
        if (!top->isVisible() || qobject_cast<QDialog*>(top)) continue; // dialogs are answered, see answerDialog
        for (auto* widget : top->findChildren<QWidget*>()) {
            const bool isControl = qobject_cast<QAbstractButton*>(widget) || qobject_cast<QComboBox*>(widget) ||
                                   qobject_cast<QLineEdit*>(widget) || qobject_cast<ProgramEditor*>(widget);
            if (!isControl || !widget->isVisible() || !widget->isEnabled() || !isHarmless(*widget)) continue;
            if (!widget->visibleRegion().isEmpty()) found << QList<QWidget*>(weight(*widget), widget);
        }
    }
    return found;
}

// Where a stopped send goes on by itself as long as nobody touches caret or text, and nothing may be lost or doubled.
void MonkeyTest::watchStops(viewTX* view)
{
    if (view->property(stoppedAt).isValid()) return;
    view->setProperty(stoppedAt, nowhere);
    auto* editor = view->findChild<ProgramEditor*>("rt1");
    const auto forget = [view] { view->setProperty(stoppedAt, nowhere); };
    connect(editor, &ProgramEditor::operatorTouched, view, forget);
    connect(editor, &QsciScintilla::textChanged, view, forget);
}

// What a send begins with is known before it does: its first byte may arrive at once.
template <typename Action> void MonkeyTest::recordSends(Action action)
{
    struct Before {
        QPointer<viewTX> view;
        Place* place;
        QByteArray line;
        bool wasSending;
    };
    const auto isFromTop = [](const viewTX& view) { return view.findChild<QComboBox*>("cbo1")->currentIndex() == 0; };
    QList<Before> before;
    for (auto* view : transfers()) {
        auto* editor = view->findChild<ProgramEditor*>("rt1");
        auto* place = placeOf(*view->mc);
        if (!place || !editor) continue;
        watchStops(view);
        const bool wasSending = view->dncRunning() && view->txState.State != viewTX::TxState::txState_idle;
        const bool isTop = isFromTop(*view);
        if (isTop) view->setProperty(stoppedAt, nowhere);
        const bool goesOn = view->property(stoppedAt).toLongLong() == editor->caret();
        QString line = editor->lineText(editor->lineAt(isTop ? 0 : editor->caret()));
        if (line.isEmpty()) line = editor->lineText(editor->lineAt(0)); // behind the last: a repeat begins at the top
        const bool mayBegin = !view->dncRunning() && !goesOn;
        before << Before{view, place, mayBegin ? line.toLatin1() : QByteArray(), wasSending};
    }
    action();
    for (const auto& one : before) {
        viewTX* view = one.view;
        if (!view) continue;
        if (view->dncRunning() && !one.line.isEmpty()) one.place->wire.sendBegins(one.line);
        const bool isStopped = one.wasSending && !view->dncRunning() && !isFromTop(*view);
        if (isStopped) view->setProperty(stoppedAt, qlonglong(view->findChild<ProgramEditor*>("rt1")->caret()));
    }
}

void MonkeyTest::clickSomething()
{
    auto* popup = QApplication::activePopupWidget();
    if (auto* list = popup ? popup->findChild<QAbstractItemView*>() : nullptr) { // of a combo box
        log_.note("choose from a list");
        const QModelIndex item = list->model()->index(chance(std::max(1, list->model()->rowCount())), 0);
        list->setCurrentIndex(item);
        return QTest::keyClick(list, chance(4) == 0 ? Qt::Key_Escape : Qt::Key_Return);
    }
    const auto widgets = touchable();
    if (widgets.isEmpty() || (popup && chance(5) == 0)) {
        log_.note("Escape");
        if (popup) QTest::keyClick(popup, Qt::Key_Escape);
        return;
    }
    auto* widget = widgets[chance(static_cast<int>(widgets.size()))];
    const auto* owner = widget->window();
    log_.note("click " + widget->objectName() + " in " + owner->objectName());
    const QRect seen = widget->visibleRegion().boundingRect();
    auto* target = qobject_cast<ProgramEditor*>(widget) ? static_cast<ProgramEditor*>(widget)->viewport() : widget;
    const QPoint at = qobject_cast<ProgramEditor*>(widget)
                          ? QPoint(chance(std::max(1, target->width())), chance(std::max(1, target->height())))
                          : seen.center();
    QTest::mouseClick(target, Qt::LeftButton, {}, at);
}

// What operators do most: a machine, a choice of its menu and, once the dialog is answered, Send.
void MonkeyTest::chooseSomething()
{
    const int index = 1 + chance(std::max(1, static_cast<int>(g::mcIcons.size()) - 1));
    auto* icon = mcIconAt(index);
    if (!icon || QApplication::activePopupWidget()) return;
    const QString choice = chance(4) == 0 ? "btnRX" : "btnTX";
    log_.note(QStringLiteral("machine %1: %2").arg(icon->MCNAME, choice));
    icon->btnMC_Click();
    op_->click(choice);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    for (auto* view : transfers()) {
        auto* send = op_->findIn<QAbstractButton>(view, "btnSend");
        if (view->mc->MCINDEX == index && send) recordSends([send] { QTest::mouseClick(send, Qt::LeftButton); });
    }
}

void MonkeyTest::pressSomething()
{
    struct Stroke {
        Qt::Key key;
        Qt::KeyboardModifiers with = Qt::NoModifier;
    };
    static constexpr std::array moves = {
        Stroke{Qt::Key_Up},
        Stroke{Qt::Key_Down},
        Stroke{Qt::Key_Left},
        Stroke{Qt::Key_Right},
        Stroke{Qt::Key_Home},
        Stroke{Qt::Key_End},
        Stroke{Qt::Key_PageDown},
        Stroke{Qt::Key_PageUp},
        Stroke{Qt::Key_Escape},
        Stroke{Qt::Key_F3},
        Stroke{Qt::Key_F9},
        Stroke{Qt::Key_F, Qt::ControlModifier},
        Stroke{Qt::Key_Tab},
        Stroke{Qt::Key_Plus, Qt::ControlModifier},
        Stroke{Qt::Key_G, Qt::ControlModifier},
        Stroke{Qt::Key_Q},
        Stroke{Qt::Key_Minus, Qt::ControlModifier},
        Stroke{Qt::Key_Z, Qt::ControlModifier},
        Stroke{Qt::Key_Backtab},
    };
    static constexpr std::array elsewhere = {Stroke{Qt::Key_Space}, Stroke{Qt::Key_Return}, Stroke{Qt::Key_Delete},
                                             Stroke{Qt::Key_W, Qt::ControlModifier}, Stroke{Qt::Key_1}};
    QWidget* focus = QApplication::focusWidget();
    if (QApplication::activePopupWidget()) return clickSomething();
    if (!focus || !focus->isVisible() || !isHarmless(*focus)) return;
    auto* editor = qobject_cast<ProgramEditor*>(focus);
    const bool isMove = editor || chance(3) > 0;
    const Stroke stroke =
        isMove ? moves[chance(static_cast<int>(moves.size()))] : elsewhere[chance(static_cast<int>(elsewhere.size()))];
    log_.note("key " + QKeySequence(stroke.key | stroke.with).toString() + " at " + focus->objectName());
    if (editor && stroke.key == Qt::Key_Q) QTest::keyClick(focus, Qt::Key_Home); // a selection would be replaced
    if (stroke.key == Qt::Key_Q) return QTest::keyClick(focus, 'q');
    QTest::keyClick(focus, stroke.key, stroke.with);
}

void MonkeyTest::touchControl()
{
    auto& place = places_[chance(3)];
    const int what = chance(4);
    log_.note(QStringLiteral("control %1: %2").arg(QLatin1Char(place.letter)).arg(what));
    if (what == 0) place.control->pressStart();
    if (what == 1 && !place.isHeld) place.control->send(std::string(20, place.letter) + " 1\r\n");
    if (what == 2) place.control->holdLine();
    if (what == 3 || (what == 2 && chance(2) == 0)) place.control->releaseLine();
    place.isHeld = what == 2 || (place.isHeld && what != 3);
}

// A machine that was deleted comes back: a new one gets its port through the form.
void MonkeyTest::mendMachine()
{
    if (QApplication::activePopupWidget() || QApplication::activeModalWidget()) return;
    for (auto& place : places_) {
        const QString port = QString::fromStdString(place.control->devicePath());
        MachineRecord* fresh = nullptr;
        bool isUsed = false;
        for (qsizetype index = 1; index < g::mcIcons.size(); ++index) {
            auto& machine = *g::mcIcons[index];
            isUsed = isUsed || machine.MCPORT == port;
            if (!placeOf(machine)) fresh = &machine;
        }
        if (isUsed) continue;
        log_.note("give a machine the port of " + QString(QLatin1Char(place.letter)));
        if (!fresh) return op_->app().btnAddMC_Click();
        const int index = static_cast<int>(fresh->MCINDEX);
        mcIconAt(index)->btnMC_Click();
        op_->app().setupButton_Clicked();
        if (op_->isShown("btnSetupFailed")) op_->click("btnSetupFailed");
        auto* child = childViewAt(index);
        auto* ports = child->findChild<QComboBox*>("cboPorts");
        QVERIFY(ports);
        ports->setCurrentText(port);
        child->findChild<QAbstractButton*>("btnSave")->click();
        QCOMPARE(g::mcIcons[index]->MCPORT, port);
        return;
    }
}

void MonkeyTest::closeAWindow()
{
    if (QApplication::activePopupWidget() || QApplication::activeModalWidget()) return;
    for (auto* top : QApplication::topLevelWidgets()) {
        if (!qobject_cast<frmChild*>(top) || !top->isVisible() || chance(2) == 0) continue;
        log_.note("close an undocked window");
        top->close();
        return;
    }
    if (chance(4) > 0) return;
    log_.note("close the main window");
    if (!op_->window().close()) return;
    const auto hasWindow = [] {
        const auto tops = QApplication::topLevelWidgets();
        return std::any_of(tops.begin(), tops.end(),
                           [](auto* top) { return qobject_cast<frmChild*>(top) && top->isVisible(); });
    };
    QTRY_VERIFY(!hasWindow()); // undocked ones go with it
    const QString before = stored();
    log_.note("start again");
    op_->restart();
    QCOMPARE(stored(), reread(before));
}

// Queued: a dialog may raise another one inside its event loop, and a timer does not fire inside itself.
void MonkeyTest::answerDialog()
{
    QPointer<QWidget> dialog = QApplication::activeModalWidget();
    if (!dialog || isAnswering_) return;
    isAnswering_ = true;
    QTimer::singleShot(0, this, [this, dialog] {
        isAnswering_ = false;
        if (dialog && dialog == QApplication::activeModalWidget() && dialog->isVisible()) answer(dialog);
    });
}

void MonkeyTest::answer(QWidget* dialog)
{
    if (auto* box = qobject_cast<QMessageBox*>(dialog)) {
        const auto buttons = box->buttons();
        auto* button = buttons[answers_.bounded(buttons.size())];
        log_.note("answer " + box->text().simplified() + ": " + button->text());
        return QTest::mouseClick(button, Qt::LeftButton);
    }
    auto* files = qobject_cast<QFileDialog*>(dialog);
    auto* view = files ? qobject_cast<viewTX*>(files->parentWidget()) : nullptr;
    Place* place = view ? placeOf(*view->mc) : nullptr;
    if (!place || answers_.bounded(3) == 0) {
        log_.note("dismiss " + dialog->objectName());
        return QTest::keyClick(dialog, Qt::Key_Escape);
    }
    const bool isOpen = files->acceptMode() == QFileDialog::AcceptOpen;
    const QString path = isOpen ? place->files[answers_.bounded(place->files.size())]
                                : dir_.filePath(QStringLiteral("saved") + QLatin1Char(place->letter));
    log_.note("file " + path);
    files->findChild<QLineEdit*>("fileNameEdit")->setText(path);
    QTest::keyClick(files->findChild<QLineEdit*>("fileNameEdit"), Qt::Key_Return);
}

void MonkeyTest::act()
{
    const int what = chance(100);
    if (QApplication::activeModalWidget()) {
        QTest::qWait(5); // soon answered
    } else if (what < 12) {
        chooseSomething();
    } else if (what < 62) {
        recordSends([this] { clickSomething(); });
    } else if (what < 84) {
        recordSends([this] { pressSomething(); });
    } else if (what < 94) {
        touchControl();
    } else if (what < 96) {
        closeAWindow();
    } else {
        mendMachine();
    }
    QTest::qWait(chance(12));
}
