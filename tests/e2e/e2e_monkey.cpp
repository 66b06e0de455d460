// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "e2e/WireCheck.h"
#include "simulator/SimulatedControl.h"

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
#include <QRandomGenerator>
#include <QTimer>

#include <array>
#include <cstdio>

namespace
{
constexpr auto stoppedAt = "monkeyStoppedAt"; // caret's place when a send was stopped
constexpr qlonglong nowhere = -1;

// At once: after a crash or a hang it tells what led there.
void note(const QString& action)
{
    std::fprintf(stderr, "%s\n", qPrintable(action));
}

bool isSending(const viewTX& view)
{
    return view.dncRunning() && view.txState.State != viewTX::TxState::txState_idle;
}

bool isFromTop(const viewTX& view)
{
    return view.findChild<QComboBox*>("cbo1")->currentIndex() == 0;
}

ProgramEditor* editorOf(const viewTX& view)
{
    return view.findChild<ProgramEditor*>("rt1");
}

// What would change the line, or the bytes on it, would make every check meaningless.
bool isHarmless(const QWidget& widget)
{
    const QString name = widget.objectName();
    return qobject_cast<const QAbstractButton*>(&widget) || name == "rt1" || name == "cbo1" || name == "txtFind";
}
} // namespace

/// An operator without a plan: random clicks and keys on what is visible, while three machines transfer. How many and
/// from which seed: VARNOCK_MONKEY_ACTIONS, VARNOCK_MONKEY_SEED. Threads make two runs of a seed alike, not equal.
class MonkeyTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void noControlEverGetsAForeignOrMisplacedLine();

private:
    struct Place {
        char letter;
        std::unique_ptr<cncsim::SimulatedControl> control;
        QStringList files;
        WireCheck wire;
        bool isHeld = false;
    };

    void buildShop();
    template <typename Action> void recordSends(Action action);
    void act();
    void chooseSomething();
    void clickSomething();
    void pressSomething();
    void touchControl();
    void closeAWindow();
    void answerDialog();
    void answer(QWidget* dialog);
    void check();

    Place* placeOf(const MachineRecord& machine);
    QList<viewTX*> transfers() const;
    int chance(int below) { return static_cast<int>(random_.bounded(below)); }

    std::array<Place, 3> places_;
    std::unique_ptr<Operator> op_;
    QRandomGenerator random_;
    QRandomGenerator answers_; // its own: when dialogs come up depends on threads
    bool isAnswering_ = false;
};

// Also anew in mid-run: machines that were deleted come back with what was stored at first.
void MonkeyTest::buildShop()
{
    std::vector<std::shared_ptr<MachineRecord>> machines;
    for (const auto& place : places_) {
        machines.push_back(Shop::machineOn(QString::fromStdString(place.control->devicePath())));
        machines.back()->MCNAME = QLatin1Char(place.letter);
        machines.back()->MCWAIT = place.letter == 'B';
        machines.back()->MCREPEAT = place.letter == 'C';
    }
    Shop::store(machines);
}

MonkeyTest::Place* MonkeyTest::placeOf(const MachineRecord& machine)
{
    for (auto& place : places_)
        if (machine.MCPORT == QString::fromStdString(place.control->devicePath())) return &place;
    return nullptr;
}

QList<viewTX*> MonkeyTest::transfers() const
{
    QList<viewTX*> views;
    for (qsizetype index = 1; index < g::mcChildViews.size(); ++index)
        if (auto* child = childViewAt(index); child && child->isLoaded()) views += child->findChildren<viewTX*>();
    return views;
}

void MonkeyTest::check()
{
    for (auto& place : places_) {
        const QString problem = place.wire.take(QByteArray::fromStdString(place.control->report().received));
        QVERIFY2(problem.isEmpty(), qPrintable(QString(QLatin1Char(place.letter)) + ": " + problem));
    }
    for (auto* view : transfers())
        for (const auto& place : places_)
            QVERIFY2(&place == placeOf(*view->mc) || !editorOf(*view)->wholeText().contains(place.letter),
                     "a view holds what belongs to another machine");
}

// What a send begins with is known before it does: its first byte may arrive at once.
template <typename Action> void MonkeyTest::recordSends(Action action)
{
    struct Before {
        QPointer<viewTX> view;
        QByteArray line;
        bool wasSending;
    };
    QList<Before> before;
    for (auto* view : transfers()) {
        auto* editor = editorOf(*view);
        // A stopped send goes on by itself as long as nobody touches caret or text, and nothing may be lost or doubled.
        const auto forget = [view] { view->setProperty(stoppedAt, nowhere); };
        if (!view->property(stoppedAt).isValid()) {
            connect(editor, &ProgramEditor::operatorTouched, view, forget);
            connect(editor, &QsciScintilla::textChanged, view, forget);
        }
        const bool isTop = isFromTop(*view);
        if (isTop || !view->property(stoppedAt).isValid()) forget();
        const bool goesOn = view->property(stoppedAt).toLongLong() == editor->caret();
        QString line = editor->lineText(editor->lineAt(isTop ? 0 : editor->caret()));
        if (line.isEmpty()) line = editor->lineText(editor->lineAt(0)); // behind the last: a repeat begins at the top
        const bool mayBegin = !view->dncRunning() && !goesOn;
        before << Before{view, mayBegin ? line.toLatin1() : QByteArray(), isSending(*view)};
    }
    action();
    for (const auto& one : before) {
        Place* place = one.view ? placeOf(*one.view->mc) : nullptr;
        if (!place) continue;
        if (one.view->dncRunning() && !one.line.isEmpty()) place->wire.sendBegins(one.line);
        if (one.wasSending && !one.view->dncRunning() && !isFromTop(*one.view))
            one.view->setProperty(stoppedAt, qlonglong(editorOf(*one.view)->caret()));
    }
}

void MonkeyTest::clickSomething()
{
    static const QHash<QString, int> weights = {{"btnMC", 4}, {"btnTX", 12}, {"btnSend", 25},  {"btnStop", 12},
                                                {"rt1", 8},   {"cbo1", 4},   {"btnUnDock", 4}, {"btnSendNow", 12}};
    auto* popup = QApplication::activePopupWidget();
    if (auto* list = popup ? popup->findChild<QAbstractItemView*>() : nullptr) { // of a combo box
        list->setCurrentIndex(list->model()->index(chance(std::max(1, list->model()->rowCount())), 0));
        return QTest::keyClick(list, chance(4) == 0 ? Qt::Key_Escape : Qt::Key_Return);
    }
    QWidgetList found;
    for (auto* top : popup ? QWidgetList{popup} : QApplication::topLevelWidgets())
        for (auto* widget : top->findChildren<QWidget*>())
            if (isHarmless(*widget) && widget->isEnabled() && !widget->visibleRegion().isEmpty())
                found << QWidgetList(weights.value(widget->objectName(), 2), widget);
    if (found.isEmpty()) return;
    auto* widget = found[chance(static_cast<int>(found.size()))];
    note("click " + widget->objectName() + " in " + widget->window()->objectName());
    auto* editor = qobject_cast<ProgramEditor*>(widget);
    const QPoint middle = widget->visibleRegion().boundingRect().center();
    const QPoint at = editor ? QPoint(chance(editor->width()), chance(editor->height())) : middle;
    QTest::mouseClick(editor ? editor->viewport() : widget, Qt::LeftButton, {}, at);
}

// What operators do most: a machine, a choice of its menu and, once the dialog is answered, Send.
void MonkeyTest::chooseSomething()
{
    auto* icon = mcIconAt(1 + chance(static_cast<int>(g::mcIcons.size())));
    if (!icon || QApplication::activePopupWidget()) return;
    const QString choice = chance(4) == 0 ? "btnRX" : "btnTX";
    note(icon->MCNAME + ": " + choice);
    icon->btnMC_Click();
    op_->click(choice);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    for (auto* view : transfers())
        if (auto* send = op_->find("btnSend", view); send && view->mc.get() == icon)
            recordSends([send] { QTest::mouseClick(send, Qt::LeftButton); });
}

void MonkeyTest::pressSomething()
{
    static const QStringList moves = {"Up", "Down", "Left", "Right",  "Home",   "End",    "PgDown", "PgUp",   "Esc",
                                      "F3", "F9",   "Tab",  "Ctrl+F", "Ctrl++", "Ctrl+G", "Ctrl+-", "Ctrl+Z", "Q"};
    static const QStringList elsewhere = {"Space", "Return", "Del", "Ctrl+W", "1"};
    QWidget* focus = QApplication::focusWidget();
    if (QApplication::activePopupWidget()) return clickSomething();
    if (!focus || !focus->isVisible() || !isHarmless(*focus)) return;
    const bool isEditor = qobject_cast<ProgramEditor*>(focus);
    const QStringList& keys = isEditor || chance(3) > 0 ? moves : elsewhere;
    const QString key = keys[chance(static_cast<int>(keys.size()))];
    note("key " + key + " at " + focus->objectName());
    if (key != "Q") return QTest::keySequence(focus, QKeySequence(key));
    if (isEditor) QTest::keyClick(focus, Qt::Key_Home); // a selection would be replaced
    QTest::keyClick(focus, 'q');
}

void MonkeyTest::touchControl()
{
    auto& place = places_[static_cast<std::size_t>(chance(3))];
    const int what = chance(4);
    note(QStringLiteral("control %1: %2").arg(QLatin1Char(place.letter)).arg(what));
    if (what == 0) place.control->pressStart();
    if (what == 1 && !place.isHeld) place.control->send(std::string(20, place.letter) + " 1\r\n");
    if (what == 2) place.control->holdLine();
    if (what == 3) place.control->releaseLine();
    if (what >= 2) place.isHeld = what == 2;
}

void MonkeyTest::closeAWindow()
{
    if (QApplication::activePopupWidget() || QApplication::activeModalWidget()) return;
    for (auto* top : QApplication::topLevelWidgets())
        if (qobject_cast<frmChild*>(top) && top->isVisible() && chance(2) == 0) return void(top->close());
    const auto isThere = [this](const Place& place) {
        return std::any_of(g::mcIcons.begin() + 1, g::mcIcons.end(),
                           [&](const auto& machine) { return placeOf(*machine) == &place; });
    };
    const bool isWhole = std::all_of(places_.begin(), places_.end(), isThere);
    note("close the main window");
    if ((isWhole && chance(4) > 0) || !op_->window().close()) return;
    QTRY_VERIFY(QApplication::topLevelWidgets().isEmpty() || !op_->isShown("btnClose")); // undocked ones go with it
    const auto before = g::mcIcons.size();
    if (!isWhole) buildShop();
    op_->restart();
    QVERIFY(!isWhole || g::mcIcons.size() == before);
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
        auto* button = box->buttons()[answers_.bounded(box->buttons().size())];
        note("answer " + box->text().simplified() + ": " + button->text());
        return QTest::mouseClick(button, Qt::LeftButton);
    }
    auto* files = qobject_cast<QFileDialog*>(dialog);
    auto* view = files ? qobject_cast<viewTX*>(files->parentWidget()) : nullptr;
    Place* place = view ? placeOf(*view->mc) : nullptr;
    if (!place || answers_.bounded(3) == 0) return QTest::keyClick(dialog, Qt::Key_Escape);
    const bool isOpen = files->acceptMode() == QFileDialog::AcceptOpen;
    const QString path = isOpen ? place->files[answers_.bounded(place->files.size())] : place->files[0] + "saved";
    note("file " + path);
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
    } else {
        closeAWindow();
    }
    QTest::qWait(chance(12));
}

void MonkeyTest::noControlEverGetsAForeignOrMisplacedLine()
{
    const int actions = std::max(qEnvironmentVariableIntValue("VARNOCK_MONKEY_ACTIONS"), 600);
    const int seed = std::max(qEnvironmentVariableIntValue("VARNOCK_MONKEY_SEED"), 1);
    note("seed " + QString::number(seed));
    random_.seed(static_cast<quint32>(seed));
    answers_.seed(static_cast<quint32>(seed) + 1);
    const QTemporaryDir files;
    for (char letter = 'A'; auto& place : places_) {
        place.letter = letter++;
        cncsim::Settings settings;
        settings.xonXoff = true;
        settings.readRate = 30000;
        place.control = std::make_unique<cncsim::SimulatedControl>(settings);
        for (const int lines : {40, 300, 3000}) {
            const QByteArray text = WireCheck::program(place.letter, lines % 7, lines);
            place.wire.addProgram(text);
            QFile file(files.filePath(place.letter + QString::number(lines)));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
            place.files << file.fileName();
        }
    }
    buildShop();
    op_ = std::make_unique<Operator>();
    QTimer dialogs;
    connect(&dialogs, &QTimer::timeout, this, &MonkeyTest::answerDialog);
    dialogs.start(7);
    for (int action = 0; action < actions && !QTest::currentTestFailed(); ++action) {
        act();
        if (action % 50 == 49) check();
    }
    for (auto& place : places_)
        place.control->releaseLine();
    QTest::qWait(100);
    if (!QTest::currentTestFailed()) check();
    op_.reset();
    for (auto& place : places_)
        QVERIFY(place.wire.lines > 0);
}

QTEST_MAIN(MonkeyTest)
#include "e2e_monkey.moc"
