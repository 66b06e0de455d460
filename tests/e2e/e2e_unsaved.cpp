// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Answers.h"
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "editor/ProgramEditor.h"
#include "shell/frmChild.h"
#include "shell/MachineButton.h"
#include "shell/viewChild.h"

#include <QDir>
#include <QLabel>

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
    }

    // True if the view has ended.
    bool leave(const QString& way)
    {
        const auto view = g::mcChildViews[1];
        if (way == "close") op_->click("btnClose");
        if (way == "window") undocked()->close();
        if (way == "menu") op_->choose(1, "btnRX");
        if (way == "delete") op_->click("btnDeleteIcon", mcIconAt(1));
        if (way == "quit") op_->window().close();
        return !dynamic_cast<viewChild&>(*view).isLoaded();
    }

    static frmChild* undocked()
    {
        for (auto* window : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<frmChild*>(window); found && found->isVisible()) return found;
        return nullptr;
    }

    const QByteArray program_ = Shop::program(1500); // more than a line holds that nobody reads
    const QTemporaryDir folder_;
    std::unique_ptr<PtyPair> line_;
    std::unique_ptr<Operator> op_;
    const QStringList ways_ = {"close", "window", "menu", "delete", "quit"};

private Q_SLOTS:
    void losesNothingUnasked_data()
    {
        QTest::addColumn<QString>("way");
        QTest::addColumn<Act>("begin");
        QTest::addColumn<QString>("saved");
        QTest::addColumn<int>("kept");
        const Work works[] = {
            {"received", [this] { receive(), toQuiet(); }, "O7\nM30\n", Work::Chosen},
            {"arriving", [this] { receive(); }, "O7\nM30\n", Work::Chosen},
            {"typed", [this] { op_->open(1, {}), type("O8"); }, "O8", Work::Chosen},
            {"changed", [this] { op_->open(1, "M30\n"), type("O9 "); }, "O9 M30\n", Work::File},
            {"setup", [this] { op_->choose(1, "btnSetup"), nameMachine("Mill"); }, "Mill", Work::Setup},
            {"sending", [this] { op_->send(1, program_); }, {}, Work::Nowhere},
            {"changed, sending", [this] { op_->open(1, program_), type("("), op_->click("btnSend"); }, "(" + program_,
             Work::File},
            {"stopped", [this] { stopInTheMiddle(); }, {}, Work::Nowhere},
        };
        for (const auto& way : ways_)
            for (const auto& work : works)
                QTest::addRow("%s: %s", qPrintable(way), work.name)
                    << way << work.begin << work.saved << int(work.kept);
    }

    void losesNothingUnasked()
    {
        QFETCH(QString, way);
        QFETCH(Act, begin);
        QFETCH(QString, saved);
        QFETCH(int, kept);
        const QStringList deleting = way == "delete" ? QStringList{"Delete"} : QStringList();
        for (const bool saves : {true, false}) {
            if (saves && kept == Work::Nowhere) continue;
            start();
            begin();
            if (way == "window") op_->click("btnUnDock");
            const QString chosen = folder_.filePath("chosen.nc");
            QFile::remove(chosen);

            Answers slip(deleting + QStringList{"Enter"}); // chooses Cancel
            QVERIFY(!leave(way) && slip.areAllGiven());
            QVERIFY2(slip.said.last().startsWith("Lathe"), qPrintable(slip.said.last()));
            if (kept == Work::Chosen) { // a save that is cancelled cancels the whole
                Answers cancelled(deleting + QStringList{"Save", ""});
                QVERIFY(!leave(way) && cancelled.areAllGiven());
                QVERIFY(contentOf(chosen).isEmpty());
            }
            const QString discard = kept != Work::Nowhere                    ? "Discard"
                                    : slip.said.last().contains("can still") ? "End the send"
                                                                             : "Stop";
            Answers answers(deleting + (!saves                 ? QStringList{discard}
                                        : kept == Work::Chosen ? QStringList{"Save", chosen}
                                                               : QStringList{"Save"}));
            const auto machine = g::mcIcons[1];
            QVERIFY(leave(way) && answers.areAllGiven());
            const QString file = kept == Work::Chosen ? chosen : op_->programPath();
            if (kept == Work::Setup) QCOMPARE(machine->MCNAME, saves ? saved : QString("Lathe"));
            if (kept == Work::Chosen || kept == Work::File) QCOMPARE(contentOf(file) == saved.toLatin1(), saves);
        }
    }

    void asksNothingWhereNothingIsLost_data()
    {
        QTest::addColumn<QString>("way");
        QTest::addColumn<Act>("begin");
        const Work works[] = {
            {"opened", [this] { op_->open(1, "M30"); }, {}, {}},
            {"undone", [this] { op_->open(1, "M30"), type("X"), undo(); }, {}, {}},
            {"new", [this] { op_->open(1, "M30"), op_->click("btnLock"), op_->click("btnNew"); }, {}, {}},
            {"saved", [this] { receive(), toQuiet(), save(folder_.filePath("saved.nc")); }, {}, {}},
            {"nothing received", [this] { op_->choose(1, "btnRX"); }, {}, {}},
            {"changed back", [this] { op_->choose(1, "btnSetup"), nameMachine("Mill"), nameMachine("Lathe"); }, {}, {}},
            {"stored", [this] { op_->choose(1, "btnSetup"), nameMachine("Mill"), op_->click("btnSave"); }, {}, {}},
            {"rewound", [this] { stopInTheMiddle(), op_->click("btnRewind"); }, {}, {}},
        };
        for (const QString way : {"window", "quit"})
            for (const auto& work : works)
                QTest::addRow("%s: %s", qPrintable(way), work.name) << way << work.begin;
    }

    void asksNothingWhereNothingIsLost()
    {
        QFETCH(QString, way);
        QFETCH(Act, begin);
        start();
        begin();
        if (way == "window") op_->click("btnUnDock");
        Answers answers(way == "delete" ? QStringList{"Delete", "Enter"} : QStringList{"Enter"});
        QVERIFY(leave(way));
        QVERIFY2(answers.said.size() == (way == "delete" ? 1 : 0), qPrintable(answers.said.join(u'\n')));
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

    void deletedMachinesComeBackInTheirPlaces()
    {
        line_ = std::make_unique<PtyPair>();
        QList<QString> names;
        std::vector<std::shared_ptr<MachineRecord>> machines;
        for (const char* name : {"A", "B", "C"}) {
            machines.push_back(Shop::machineOn(line_->devicePath(), "Okuma"));
            machines.back()->MCNAME = name;
        }
        machines[1]->MCXMODEM0 = true;
        Shop::store(machines);
        op_.reset();
        op_ = std::make_unique<Operator>();
        g::saveAllMcSettings();
        const auto before = Preferences::string("Varnock");
        QVERIFY(!op_->isShown("undoBar"));
        for (const int index : {2, 1}) {
            Answers answers({"Delete"});
            op_->click("btnDeleteIcon", mcIconAt(index));
        }
        op_->choose(1, "btnSetup"); // it is at another place when they come back
        QVERIFY(g::mcIcons.size() == 2 && g::mcIcons[1]->MCNAME == "C");
        op_->click("btnUndo");
        op_->click("btnUndo");
        QCOMPARE(Preferences::string("Varnock"), before);
        QVERIFY(!op_->isShown("undoBar") && childViewAt(3)->iMcIndex == 3);
        Answers answers({"Delete"});
        op_->click("btnDeleteIcon", mcIconAt(2));
        op_->click("btnDismiss");
        QVERIFY(!op_->isShown("undoBar") && g::mcIcons.size() == 3);
    }

    void savedProgramShowsItsPlaceAndTheFolderIsRemembered()
    {
        start();
        receive();
        QCOMPARE(Operator::find<QLabel>("lblSaved")->text(), "Not saved");
        const QDir folder(folder_.path());
        QVERIFY(folder.mkpath("programs"));
        const QString path = folder.filePath("programs/other.nc");
        Answers answers({path});
        op_->click("btnSave");
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(answers.proposed, QStringList{"O7.nc"});
        QCOMPARE(Operator::find<QLineEdit>("txtPath")->text(), path);
        QCOMPARE(Operator::find<QLabel>("lblSaved")->text(), "Saved");
        op_->restart();
        receive();
        op_->click("btnSave");
        const auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog && dialog->labelText(QFileDialog::LookIn) == "Save in:");
        QCOMPARE(dialog->directory(), QDir(folder.filePath("programs")));
    }

    void newIsTakenBackByUndo()
    {
        start();
        receive();
        op_->click("btnNew");
        line_->write("O8\n"); // goes on arriving
        auto* editor = op_->find<ProgramEditor>("rt1");
        QTRY_COMPARE(editor->wholeText(), QByteArray("O8\n"));
        undo();
        QCOMPARE(editor->wholeText(), QByteArray("O7\nM30\nO8\n"));
    }
};

QTEST_MAIN(UnsavedTest)
#include "e2e_unsaved.moc"
