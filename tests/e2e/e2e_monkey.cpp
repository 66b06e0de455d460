// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "e2e/WireCheck.h"
#include "simulator/SimulatedControl.h"

#include "editor/ProgramEditor.h"
#include "shell/frmChild.h"
#include "shell/viewChild.h"
#include "transfer/viewTX.h"

#include <QAbstractItemView>
#include <QMenu>
#include <QPointer>
#include <QRandomGenerator>

#include <array>
#include <cstdio>

/// An operator without a plan: random clicks and keys on what is visible, while three machines transfer. How many and
/// from which seed: VARNOCK_MONKEY_ACTIONS, VARNOCK_MONKEY_SEED. Because of threads, two runs with one seed are
/// similar, not identical.
class MonkeyTest : public QObject
{
    Q_OBJECT
    struct Place {
        char letter;
        std::unique_ptr<cncsim::SimulatedControl> control;
        QStringList files;
        QByteArray punched; // a program of its own: once received, it may be sent, too
        WireCheck wire;
    };
    static constexpr auto stoppedAt = "monkeyStoppedAt"; // caret's place when a send was stopped
    static constexpr qlonglong nowhere = -1;

    // Printed at once: after a crash or a hang these are the actions that led there.
    static void note(const QString& action) { std::fprintf(stderr, "%s\n", qPrintable(action)); }
    static ProgramEditor* editorOf(const viewTX& view) { return view.findChild<ProgramEditor*>("rt1"); }
    static bool isFromTop(const viewTX& view) { return view.findChild<QComboBox*>("cbo1")->currentIndex() == 0; }
    int chance(qsizetype below) { return static_cast<int>(random_.bounded(static_cast<quint32>(below))); }

    // Whatever changes the line settings or the bytes sent would make every check meaningless.
    static bool isHarmless(const QWidget& widget)
    {
        return qobject_cast<const QAbstractButton*>(&widget) ||
               QStringList{"rt1", "cbo1"}.contains(widget.objectName());
    }

    Place* placeOf(const MachineRecord& machine)
    {
        for (auto& place : places_)
            if (machine.MCPORT == QString::fromStdString(place.control->devicePath())) return &place;
        return nullptr;
    }

    static QList<viewTX*> transfers()
    {
        QList<viewTX*> views;
        for (qsizetype index = 1; index < g::mcChildViews.size(); ++index)
            if (auto* child = childViewAt(index); child && child->isLoaded()) views += child->findChildren<viewTX*>();
        return views;
    }

    void storeShop() const
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

    void check()
    {
        for (auto& place : places_) {
            const QString problem = place.wire.take(QByteArray::fromStdString(place.control->report().received));
            QVERIFY2(problem.isEmpty(), qPrintable(problem));
            for (auto* view : transfers())
                QVERIFY2(&place == placeOf(*view->mc) || !editorOf(*view)->wholeText().contains(place.letter),
                         "a view holds what belongs to another machine");
        }
    }

    // A send's first line is looked up before it starts: its first byte may arrive at once.
    template <typename Action> void recordSends(Action action)
    {
        QList<std::tuple<QPointer<viewTX>, QByteArray, bool>> before; // with its first line, and whether it was sending
        for (auto* view : transfers()) {
            auto* editor = editorOf(*view);
            // Send continues a stopped send unless somebody touched caret or text; nothing may be lost or doubled.
            const auto forget = [view] { view->setProperty(stoppedAt, nowhere); };
            const bool isNew = !view->property(stoppedAt).isValid();
            if (isNew) connect(editor, &ProgramEditor::operatorTouched, view, forget);
            if (isNew) connect(editor, &QsciScintilla::textChanged, view, forget);
            if (isNew || isFromTop(*view)) forget();
            const bool goesOn = view->property(stoppedAt).toLongLong() == editor->caret();
            QString line = editor->lineText(editor->lineAt(isFromTop(*view) ? 0 : editor->caret()));
            if (line.isEmpty()) line = editor->lineText(editor->lineAt(0)); // from the end a repeat begins at the top
            if (view->dncRunning() || goesOn) line.clear();
            before.emplace_back(view, line.toLatin1(),
                                view->dncRunning() && view->txState().State != viewTX::TxState::txState_idle);
        }
        action();
        for (const auto& [view, line, wasSending] : before) {
            Place* place = view ? placeOf(*view->mc) : nullptr;
            if (place && view->dncRunning() && !line.isEmpty()) place->wire.sendBegins(line);
            if (place && wasSending && !view->dncRunning() && !isFromTop(*view))
                view->setProperty(stoppedAt, qlonglong(editorOf(*view)->caret()));
        }
    }

    void clickSomething()
    {
        static const QHash<QString, int> weights = {{"btnMC", 4},    {"btnTX", 12},        {"btnSend", 40},
                                                    {"btnStop", 12}, {"rt1", 8},           {"btnUnDock", 4},
                                                    {"cbo1", 4},     {"btnDeleteIcon", 1}, {"btnSendNow", 12}};
        auto* popup = QApplication::activePopupWidget();
        if (auto* list = popup ? popup->findChild<QAbstractItemView*>() : nullptr) // of a combo box
            return QTest::keyClick(list, std::array{Qt::Key_Up, Qt::Key_Down, Qt::Key_Return}[std::size_t(chance(3))]);
        QWidgetList found;
        for (auto* top : popup ? QWidgetList{popup} : QApplication::topLevelWidgets())
            for (auto* widget : top->findChildren<QWidget*>())
                if (isHarmless(*widget) && widget->isEnabled() && !widget->visibleRegion().isEmpty())
                    found << QWidgetList(weights.value(widget->objectName(), 2), widget);
        if (found.isEmpty()) return;
        auto* widget = found[chance(found.size())];
        note("click " + widget->objectName() + " in " + widget->window()->objectName());
        auto* editor = qobject_cast<ProgramEditor*>(widget);
        const QPoint middle = widget->visibleRegion().boundingRect().center();
        const QPoint at = editor ? QPoint(chance(editor->width()), chance(editor->height())) : middle;
        QTest::mouseClick(editor ? editor->viewport() : widget, Qt::LeftButton, {}, at);
    }

    // What operators do most: a machine, its program and, once the dialog is answered, Send.
    void sendSomething()
    {
        auto* icon = mcIconAt(1 + chance(g::mcIcons.size()));
        if (!icon || QApplication::activePopupWidget()) return;
        note("send to " + icon->MCNAME);
        icon->btnMC_Click();
        Operator::click("btnTX");
        requireSoon([] { return !QApplication::activeModalWidget(); }, "the file dialog is not answered");
        if (Operator::isShown("btnSend")) recordSends([] { Operator::click("btnSend"); });
    }

    void pressSomething()
    {
        static const QStringList keys = {"Up",     "Down",   "Left",   "Right",  "Home",   "End", "PgDown", "PgUp",
                                         "Esc",    "F3",     "F9",     "Tab",    "Ctrl+F", "Q",   "Ctrl++", "Ctrl+-",
                                         "Ctrl+G", "Ctrl+Z", "Return", "Ctrl+W", "Space",  "Del"};
        QWidget* focus = QApplication::focusWidget();
        if (QApplication::activePopupWidget()) return clickSomething();
        if (!focus || !focus->isVisible() || !isHarmless(*focus)) return;
        const bool isEditor = qobject_cast<ProgramEditor*>(focus);
        const QString key = keys[chance(keys.size() - (isEditor ? 4 : 0))]; // q alone may change a text
        note("key " + key + " at " + focus->objectName());
        if (key != "Q") return QTest::keySequence(focus, QKeySequence(key));
        if (isEditor) QTest::keyClick(focus, Qt::Key_Home); // a selection would be replaced
        QTest::keyClick(focus, 'q');
    }

    void touchControl()
    {
        auto& place = places_[std::size_t(chance(3))];
        const int what = chance(4);
        note(QStringLiteral("control %1: %2").arg(QLatin1Char(place.letter)).arg(what));
        if (what == 2) return place.control->holdLine();
        place.control->releaseLine();
        if (what == 0) place.control->pressStart();
        if (what == 1) place.control->send(place.punched.toStdString());
    }

    // Deleted machines are back after the restart.
    void closeAWindow()
    {
        if (QApplication::activePopupWidget() || QApplication::activeModalWidget()) return;
        for (auto* top : QApplication::topLevelWidgets())
            if (qobject_cast<frmChild*>(top) && top->isVisible() && chance(2) == 0) return void(top->close());
        note("close the main window");
        if (chance(g::mcIcons.size() > 3 ? 4 : 1) > 0 || !op_->window().close()) return;
        requireSoon([] { return !Operator::isShown("btnStop"); }, "an undocked view outlives the main window");
        storeShop();
        op_->restart();
    }

    void answerMenu(QMenu& menu)
    {
        note("menu " + menu.objectName());
        QTest::keyClick(&menu, answers_.bounded(2) == 0 ? Qt::Key_Escape : Qt::Key_Down);
        if (menu.isVisible()) QTest::keyClick(&menu, Qt::Key_Return);
    }

    // Queued: a dialog may raise another one inside its event loop, and a timer does not fire inside itself.
    void answerDialog()
    {
        if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) return answerMenu(*menu);
        QPointer<QWidget> dialog = QApplication::activeModalWidget();
        if (!dialog || std::exchange(isAnswering_, true)) return;
        QTimer::singleShot(0, this, [this, dialog] {
            isAnswering_ = false;
            if (dialog && dialog == QApplication::activeModalWidget() && dialog->isVisible()) answer(dialog);
        });
    }

    void answer(QWidget* dialog)
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
        auto* name = files->findChild<QLineEdit*>("fileNameEdit");
        name->setText(path);
        QTest::keyClick(name, Qt::Key_Return);
    }

    void act()
    {
        const int what = chance(100);
        if (QApplication::activeModalWidget()) return QTest::qWait(5); // soon answered
        if (what < 10) return sendSomething();
        if (what < 62) return recordSends([this] { clickSomething(); });
        if (what < 84) return recordSends([this] { pressSomething(); });
        what < 97 ? touchControl() : closeAWindow();
    }

    // Whatever happened before, the next operator's sends are right.
    void goOn()
    {
        op_.reset();
        storeShop();
        op_ = std::make_unique<Operator>();
        for (int machine = 1; machine <= 3; ++machine) {
            auto& control = *places_[std::size_t(machine - 1)].control;
            control.releaseLine();
            g::mcIcons[machine]->MCWAIT = g::mcIcons[machine]->MCREPEAT = false;
            const QByteArray program = Shop::program(100);
            op_->send(machine, program);
            QTRY_VERIFY_WITH_TIMEOUT(op_->isShown("btnSend"), 20000);
            QTRY_VERIFY(QByteArray::fromStdString(control.report().received).endsWith(Shop::onWire(program)));
        }
    }

    std::array<Place, 3> places_;
    std::unique_ptr<Operator> op_;
    QRandomGenerator random_;
    QRandomGenerator answers_; // separate, since threads decide when dialogs come up
    bool isAnswering_ = false;

private Q_SLOTS:
    void noControlEverGetsAForeignOrMisplacedLine()
    {
        const int actions = std::max(qEnvironmentVariableIntValue("VARNOCK_MONKEY_ACTIONS"), 600);
        const auto seed = static_cast<quint32>(qEnvironmentVariableIntValue("VARNOCK_MONKEY_SEED"));
        random_.seed(seed);
        answers_.seed(seed + 1);
        const QTemporaryDir dir;
        for (char letter = 'A'; auto& place : places_) {
            place.letter = letter++;
            cncsim::Settings settings;
            settings.xonXoff = true;
            settings.readRate = 10000; // a little slower than the line, so that it is held
            place.control = std::make_unique<cncsim::SimulatedControl>(settings);
            for (const int lines : {40, 300, 1000}) {
                QFile file(dir.filePath(QLatin1Char(place.letter) + QString::number(lines)));
                QVERIFY(file.open(QIODevice::WriteOnly));
                file.write(place.wire.addProgram(place.letter, static_cast<int>(place.files.size()), lines));
                place.files << file.fileName();
            }
            place.punched = Shop::onWire(place.wire.addProgram(place.letter, 9, 1));
        }
        storeShop();
        op_ = std::make_unique<Operator>();
        QTimer dialogs;
        connect(&dialogs, &QTimer::timeout, this, &MonkeyTest::answerDialog);
        dialogs.start(7);
        for (int action = 1; action <= actions && !QTest::currentTestFailed(); ++action) {
            act();
            QTest::qWait(chance(12));
            if (action % 50 == 0) check();
        }
        const auto lines = places_[0].wire.lines + places_[1].wire.lines + places_[2].wire.lines;
        note(QString("%1 actions, %2 lines reached the controls").arg(actions).arg(lines));
        QVERIFY(lines > 100);
        dialogs.stop();
        if (!QTest::currentTestFailed()) goOn();
        op_.reset();
    }
};

QTEST_MAIN(MonkeyTest)
#include "e2e_monkey.moc"
