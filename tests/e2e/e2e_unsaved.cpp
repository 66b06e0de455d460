// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Answers.h"
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "config/RecentPrograms.h"
#include "editor/ProgramEditor.h"
#include "shell/frmChild.h"
#include "shell/MachineButton.h"
#include "shell/viewChild.h"

#include <QLabel>
#include <QMenu>
#include <QToolButton>

#include <functional>

using Act = std::function<void()>;
Q_DECLARE_METATYPE(Act)

/// What an operator would lose is asked about, whichever way he leaves; where nothing would be lost, nothing is asked.
class UnsavedTest : public QObject
{
    Q_OBJECT

    struct Work {
        const char* name;
        Act begin;
        QString saved;                              // what Save keeps; empty where there is nothing to save
        enum { Nowhere, Chosen, File, Setup } kept; // and where: in a file chosen then, in the program's, in the record
    };

    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static QString headline() { return Operator::find<QLabel>("lblTransferState")->text(); }
    static void toQuiet()
    {
        requireSoon([] { return headline() == "Waiting for bytes"; }, "no quiet", 20000);
    }

    static void type(const QString& text)
    {
        if (!Operator::find("btnNew")->isEnabled()) Operator::click("btnLock");
        QTest::keyClicks(Operator::find("rt1"), text);
    }

    static void undo() { QTest::keyClick(Operator::find("rt1"), Qt::Key_Z, Qt::ControlModifier); }

    void receive() const
    {
        op_->choose(1, "btnRX");
        line_->write("O7\nM30\n");
        requireSoon([] { return Operator::find<ProgramEditor>("rt1")->textSize() == 7; }, "nothing arrives");
    }

    void save(const QString& path) const
    {
        QFile::remove(path); // or the dialog asks whether to replace it
        Answers answers({path});
        op_->click("btnSave");
        requireSoon([&] { return answers.areAllGiven() && !QApplication::activeModalWidget(); }, "not saved", 20000);
    }

    static void nameMachine(const QString& text)
    {
        auto* name = Operator::find<QLineEdit>("txtMCName");
        name->selectAll();
        QTest::keyClicks(name, text);
    }

    void stopInTheMiddle() const
    {
        op_->send(1, program_);
        require(line_->readAtLeast(1000).size() >= 1000, "nothing arrives");
        op_->click("btnStop");
    }

    void start()
    {
        line_ = std::make_unique<PtyPair>();
        const auto machine = Shop::machineOn(line_->devicePath());
        machine->MCNAME = "Lathe";
        Shop::store({machine});
        op_.reset();
        op_ = std::make_unique<Operator>();
        RecentPrograms::add(*g::mcIcons[1], other_);
    }

    // True if what the operator worked on has ended: the view, or in it the program.
    bool leave(const QString& way)
    {
        if (waysIn_.contains(way)) return replace(way);
        const auto view = g::mcChildViews[1];
        if (way == "close") op_->click("btnClose");
        if (way == "window") undocked()->close();
        if (way == "menu") op_->choose(1, "btnRX");
        if (way == "delete") op_->click("btnDeleteIcon", mcIconAt(1));
        if (way == "quit") op_->window().close();
        return !dynamic_cast<viewChild&>(*view).isLoaded();
    }

    static bool replace(const QString& way)
    {
        if (!Operator::find("btnNew")->isEnabled()) Operator::click("btnLock");
        auto* open = Operator::find<QToolButton>("btnFolder");
        if (way == "open") {
            QTest::mouseClick(open, Qt::LeftButton, {}, QPoint(4, open->height() / 2)); // not its arrow
        } else {
            Q_EMIT open->menu()->aboutToShow();
            open->menu()->actions().last()->trigger();
        }
        requireSoon([] { return !QApplication::activeModalWidget(); }, "a dialog stays", 20000);
        return Operator::find<ProgramEditor>("rt1")->wholeText() == "M99";
    }

    // What comes before the question.
    QStringList first(const QString& way) const
    {
        if (way == "delete") return {"Delete"};
        return way == "open" ? QStringList{other_} : QStringList();
    }

    static frmChild* undocked()
    {
        for (auto* window : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<frmChild*>(window); found && found->isVisible()) return found;
        return nullptr;
    }

    const QByteArray program_ = Shop::program(1500); // more than a line holds that nobody reads
    const QTemporaryDir folder_;
    const QString other_ = folder_.filePath("other.nc");
    std::unique_ptr<PtyPair> line_;
    std::unique_ptr<Operator> op_;
    const QStringList waysOut_ = {"close", "window", "menu", "delete", "quit"}, waysIn_ = {"open", "recent"};

private Q_SLOTS:
    void initTestCase()
    {
        QFile file(other_);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("M99") == 3);
    }

    void losesNothingUnasked_data()
    {
        QTest::addColumn<QString>("way");
        QTest::addColumn<Act>("begin");
        QTest::addColumn<QString>("saved");
        QTest::addColumn<int>("kept");
        const std::vector<Work> programs = {
            {"received", [this] { receive(), toQuiet(); }, "O7\nM30\n", Work::Chosen},
            {"arriving", [this] { receive(); }, "O7\nM30\n", Work::Chosen},
            {"typed", [this] { op_->open(1, {}), type("O8"); }, "O8", Work::Chosen},
            {"changed", [this] { op_->open(1, "M30\n"), type("O9 "); }, "O9 M30\n", Work::File},
        };
        const std::vector<Work> others = {
            {"setup", [this] { op_->choose(1, "btnSetup"), nameMachine("Mill"); }, "Mill", Work::Setup},
            {"sending", [this] { op_->send(1, program_); }, {}, Work::Nowhere},
            {"changed, sending", [this] { op_->open(1, program_), type("("), op_->click("btnSend"); }, "(" + program_,
             Work::File},
            {"stopped", [this] { stopInTheMiddle(); }, {}, Work::Nowhere},
        };
        const auto add = [](const QString& way, const std::vector<Work>& works) {
            for (const auto& work : works)
                QTest::addRow("%s: %s", qPrintable(way), work.name)
                    << way << work.begin << work.saved << int(work.kept);
        };
        for (const auto& way : waysOut_ + waysIn_)
            add(way, programs);
        for (const auto& way : waysOut_)
            add(way, others);
    }

    void losesNothingUnasked()
    {
        QFETCH(QString, way);
        QFETCH(Act, begin);
        QFETCH(QString, saved);
        QFETCH(int, kept);
        for (const bool saves : {true, false}) {
            if (saves && kept == Work::Nowhere) continue;
            start();
            begin();
            if (way == "window") op_->click("btnUnDock");
            const QString chosen = folder_.filePath("chosen.nc");
            QFile::remove(chosen);

            Answers slip(first(way) + QStringList{"Enter"}); // chooses Cancel
            QVERIFY(!leave(way) && slip.areAllGiven());
            QVERIFY2(slip.said.last().startsWith("Lathe"), qPrintable(slip.said.last()));
            if (kept == Work::Chosen) { // a save that is cancelled cancels the whole
                Answers cancelled(first(way) + QStringList{"Save", ""});
                QVERIFY(!leave(way) && cancelled.areAllGiven());
                QVERIFY(contentOf(chosen).isEmpty());
            }
            const QString discard = kept != Work::Nowhere                    ? "Discard"
                                    : slip.said.last().contains("can still") ? "End the send"
                                                                             : "Stop";
            Answers answers(first(way) + (!saves                 ? QStringList{discard}
                                          : kept == Work::Chosen ? QStringList{"Save", chosen}
                                                                 : QStringList{"Save"}));
            const auto machine = g::mcIcons[1];
            QVERIFY(leave(way) && answers.areAllGiven());
            if (waysIn_.contains(way))
                QVERIFY(childViewAt(1)->openWork().isNothing()); // the program opened is as its file
            const QString file = kept == Work::Chosen ? chosen : op_->programPath();
            if (kept == Work::Setup) QCOMPARE(machine->MCNAME, saves ? saved : QString("Lathe"));
            if (kept == Work::Chosen || kept == Work::File) QCOMPARE(contentOf(file) == saved.toLatin1(), saves);
        }
    }

    void asksNothingWhereNothingIsLost_data()
    {
        QTest::addColumn<QString>("way");
        QTest::addColumn<Act>("begin");
        const std::vector<Work> programs = {
            {"opened", [this] { op_->open(1, "M30"); }, {}, {}},
            {"undone", [this] { op_->open(1, "M30"), type("X"), undo(); }, {}, {}},
            {"new", [this] { op_->open(1, "M30"), op_->click("btnLock"), op_->click("btnNew"); }, {}, {}},
            {"saved", [this] { receive(), toQuiet(), save(folder_.filePath("saved.nc")); }, {}, {}},
            {"nothing received", [this] { op_->choose(1, "btnRX"); }, {}, {}},
            {"rewound", [this] { stopInTheMiddle(), op_->click("btnRewind"); }, {}, {}},
        };
        const std::vector<Work> setups = {
            {"changed back", [this] { op_->choose(1, "btnSetup"), nameMachine("Mill"), nameMachine("Lathe"); }, {}, {}},
            {"stored", [this] { op_->choose(1, "btnSetup"), nameMachine("Mill"), op_->click("btnSave"); }, {}, {}},
        };
        const auto add = [](const QString& way, const std::vector<Work>& works) {
            for (const auto& work : works)
                QTest::addRow("%s: %s", qPrintable(way), work.name) << way << work.begin;
        };
        for (const QString way : {"window", "quit", "open"})
            add(way, programs);
        for (const QString way : {"window", "quit"})
            add(way, setups);
    }

    void asksNothingWhereNothingIsLost()
    {
        QFETCH(QString, way);
        QFETCH(Act, begin);
        start();
        begin();
        if (way == "window") op_->click("btnUnDock");
        Answers answers(first(way) + QStringList{"Enter"});
        QVERIFY(leave(way));
        QVERIFY2(answers.said.size() == first(way).size(), qPrintable(answers.said.join(u'\n')));
    }

    // A question that was answered for one machine does not speak for another.
    void quittingAsksOnceForAll()
    {
        start();
        op_->click("btnAddMC");
        op_->choose(2, "btnSetup");
        op_->press(Qt::Key_Return);
        nameMachine("Mill");
        receive();
        for (const char* slip : {"Enter", "Cancel"}) {
            Answers cancelled({slip});
            QVERIFY(!op_->window().close());
            QVERIFY2(cancelled.said.first().contains("Lathe: ") && cancelled.said.first().contains("CNC2: setup"),
                     qPrintable(cancelled.said.first()));
        }
        Answers answers({"Save all and quit", folder_.filePath("last.nc")});
        QVERIFY(op_->window().close() && answers.areAllGiven());
        QCOMPARE(contentOf(folder_.filePath("last.nc")), QByteArray("O7\nM30\n"));
        QVERIFY(Preferences::string("Varnock")->contains("MCNAME=Mill"));
    }

    void saveThatFailsKeepsTheView()
    {
        start();
        receive();
        Answers answers({"Save", folder_.filePath("gone/O7.nc"), "OK"});
        QVERIFY(!leave("close") && answers.areAllGiven());
        QVERIFY(answers.said.last().startsWith("Could not save file"));
    }

    void enterAloneStopsAndDeletesNothing()
    {
        start();
        op_->send(1, program_);
        mcIconAt(1)->button()->setFocus();
        for (int times = 0; times < 3; ++times)
            op_->press(Qt::Key_Return);
        op_->toFront();
        mcIconAt(1)->button()->setFocus();
        Answers answers({"Enter"});
        op_->press(Qt::Key_Delete);
        QVERIFY(answers.areAllGiven() && g::mcIcons.size() == 2 && op_->isShown("btnStop"));
    }
};

QTEST_MAIN(UnsavedTest)
#include "e2e_unsaved.moc"
