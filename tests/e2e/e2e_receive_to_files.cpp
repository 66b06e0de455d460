// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Answers.h"
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "simulator/SimulatedControl.h"

#include "editor/ProgramEditor.h"

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QTableView>
#include <QTreeWidget>

#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <unistd.h>

/// What a control punches is saved by itself, and the operator sees what became of it.
class ReceiveToFilesTest : public QObject
{
    Q_OBJECT
    static constexpr int patience = 15'000; // ms; a busy machine

    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<cannot be read>");
    }

    // The rows of the list, the newest first: name and what became of it.
    static QStringList rows()
    {
        QStringList texts;
        const auto* list = Operator::find<QTreeWidget>("lstSaved");
        for (int row = 0; list && row < list->topLevelItemCount(); ++row)
            texts << list->topLevelItem(row)->text(0) + u'|' + list->topLevelItem(row)->text(1);
        return texts;
    }
    static QByteArray shown() { return Operator::find<ProgramEditor>("rt1")->wholeText(); }
    // Nothing is asked, once nothing arrives any more.
    bool closes() const
    {
        const auto* state = Operator::find<QLabel>("lblTransferState");
        requireSoon([state] { return state->text() == "Waiting for bytes" || state->text().startsWith("Received"); },
                    "no quiet", patience);
        Answers none({"Enter"});
        const bool isClosed = op_->window().close();
        if (!none.said.isEmpty()) qWarning("%s", qPrintable(none.said.first()));
        return isClosed && none.said.isEmpty();
    }
    static bool isUnsaved() { return Operator::isShown("lblSaved"); } // it says "Not saved", or nothing
    QStringList files() const { return QDir(folder_->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    QString path(const QString& file) const { return folder_->filePath(file); }

    // A receive view that saves by itself.
    void listen(cncsim::SimulatedControl& control, const QString& mode = "Fanuc", qint64 flow = 1)
    {
        const auto machine = Shop::machineOn(QString::fromStdString(control.devicePath()), mode);
        machine->MCNAME = "Lathe";
        machine->MCOUTDIR = folder_->path();
        machine->MCFLOW = flow;
        Shop::store({machine});
        op_ = std::make_unique<Operator>();
        op_->choose(1, "btnRX");
        op_->click("chkSaveByItself");
    }

    // O1 is punched while its folder is not there.
    void failToSave(cncsim::SimulatedControl& control)
    {
        listen(control);
        require(QDir(folder_->path()).removeRecursively(), "the folder stays");
        control.send("%\nO1\nM30\n%\n");
        requireSoon([] { return Operator::isShown("btnTryAgainSaving"); }, "nothing is to be tried again", patience);
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<Operator> op_;

private Q_SLOTS:
    void init() { folder_ = std::make_unique<QTemporaryDir>(); }
    void cleanup() { op_.reset(); }

    void threeInOnePunchThenTheSameThenOneChanged()
    {
        const QByteArray leader(20, '\0');
        const QByteArray one("%\r\nO0001(A)\r\nG0 X1\r\nM30\r\n%\r\n"), two("%\r\nO0002\r\nM30\r\n%\r\n"),
            three("%\r\nO0003\r\nM99\r\n%\r\n");
        cncsim::Settings punching;
        punching.punchProgram = (leader + one + leader + "\x12" + two + "\x14" + leader + three + leader).toStdString();
        cncsim::SimulatedControl control(punching);
        listen(control);
        const auto settings = Preferences::string("Varnock");
        control.punch();
        QTRY_COMPARE_WITH_TIMEOUT(rows(), QStringList({"O0003.nc|Saved", "O0002.nc|Saved", "O0001.nc|Saved"}),
                                  patience);
        QCOMPARE(files(), QStringList({"O0001.nc", "O0002.nc", "O0003.nc"}));
        QCOMPARE(contentOf(path("O0001.nc")), one);
        QCOMPARE(contentOf(path("O0002.nc")), two);
        QCOMPARE(contentOf(path("O0003.nc")), three);
        QTRY_COMPARE(shown().size(), qsizetype(punching.punchProgram.size())); // with the leaders, as without saving
        QTRY_VERIFY(!isUnsaved());

        control.punch();
        QTRY_COMPARE_WITH_TIMEOUT(rows().size(), 6, patience);
        QTRY_COMPARE(rows().first(3),
                     QStringList({"O0003.nc|Same as before", "O0002.nc|Same as before", "O0001.nc|Same as before"}));
        QCOMPARE(files().size(), 3);

        const QByteArray changed = QByteArray(two).replace("M30", "M02");
        control.send((leader + changed).toStdString());
        QTRY_COMPARE_WITH_TIMEOUT(rows().first(), "O0002.nc|Saved, older kept as ~1~", patience);
        QCOMPARE(contentOf(path("O0002.nc")), changed);
        QCOMPARE(contentOf(path("O0002.nc.~1~")), two);
        QCOMPARE(files().size(), 4);

        op_->click("btnCompareSaved"); // of the newest
        QTRY_COMPARE(Operator::find<QLabel>("lblDifferences")->text(), "1 difference");
        op_->click("btnCloseCompare");
        op_->toFront();
        QCOMPARE(Preferences::string("Varnock"), settings);
        QVERIFY(closes());
        op_->restart();
        op_->choose(1, "btnRX");
        QVERIFY(Operator::find<QCheckBox>("chkSaveByItself")->isChecked());
        op_->click("btnClose");
        op_->click("btnAllHistory");
        QTRY_VERIFY(Operator::find<QTableView>("tblHistory") &&
                    Operator::find<QTableView>("tblHistory")->model()->rowCount() >= 7);
        op_->find<QTableView>("tblHistory")->selectRow(0);
        QTRY_VERIFY(Operator::find<QLabel>("lblDetails")->text().contains(path("O0002.nc")));
    }

    void whatCannotBeSavedStaysAndIsTriedAgain()
    {
        cncsim::SimulatedControl control({});
        failToSave(control);
        QCOMPARE(rows(), QStringList("O1.nc|Not saved: the folder is not there"));
        QCOMPARE(shown(), QByteArray("%\nO1\nM30\n%\n"));
        QTRY_VERIFY(isUnsaved());
        Answers slip({"Enter"});
        QVERIFY(!op_->window().close() && slip.areAllGiven());
        op_->click("btnTryAgainSaving"); // too early
        QTRY_COMPARE(rows(), QStringList("O1.nc|Not saved: the folder is not there"));
        QVERIFY(QDir().mkpath(folder_->path()));
        op_->click("btnTryAgainSaving");
        QTRY_COMPARE_WITH_TIMEOUT(rows(), QStringList("O1.nc|Saved"), patience);
        QVERIFY(!op_->isShown("btnTryAgainSaving"));
        QCOMPARE(contentOf(path("O1.nc")), shown());
        QVERIFY(closes());
    }

    void olderProgramTakesNoNewersPlace()
    {
        cncsim::SimulatedControl control({});
        failToSave(control);
        QVERIFY(QDir().mkpath(folder_->path()));
        const QByteArray newer("%\nO1\nG0\nM30\n%\n");
        control.send(newer.toStdString());
        QTRY_COMPARE_WITH_TIMEOUT(rows().value(0), "O1.nc|Saved", patience);
        op_->click("btnTryAgainSaving");
        QTRY_VERIFY_WITH_TIMEOUT(rows().value(1).startsWith("O1 of ") && rows().value(1).endsWith(".nc|Saved"),
                                 patience);
        QCOMPARE(contentOf(path("O1.nc")), newer);
        QCOMPARE(files().size(), 2);
        QVERIFY(closes());
    }

    void newForgetsNothingThatIsInNoFile()
    {
        cncsim::SimulatedControl control({});
        failToSave(control);
        op_->click("btnNew");
        Answers save({"Save"});
        QVERIFY(!op_->window().close() && save.areAllGiven()); // it cannot be
        QVERIFY(QDir().mkpath(folder_->path()));
        Answers again({"Save"});
        QVERIFY(op_->window().close() && again.areAllGiven());
        QCOMPARE(contentOf(path("O1.nc")), QByteArray("%\nO1\nM30\n%\n"));
    }

    // A program whose end silence is to tell has come; New does not take it away.
    void newIsAskedAboutWhileAProgramMayGoOn()
    {
        cncsim::SimulatedControl control({});
        listen(control, "Auto");
        g::mcIcons[1]->toFiles.silence = 3600;
        control.send("O3\n");
        QTRY_COMPARE(shown(), QByteArray("O3\n"));
        op_->click("btnNew");
        Answers slip({"Enter"});
        QVERIFY(!op_->window().close() && slip.areAllGiven());
    }

    // A folder on a network may keep a write waiting for a minute: here somebody else holds it.
    void nothingWaitsForASlowFolderAndNothingIsLost()
    {
        cncsim::SimulatedControl control({});
        listen(control);
        const int held = ::open(folder_->path().toLocal8Bit().constData(), O_RDONLY | O_DIRECTORY);
        QVERIFY(held >= 0 && ::flock(held, LOCK_EX) == 0);
        control.send("%\nO1\nM30\n%\n");
        QTRY_COMPARE_WITH_TIMEOUT(rows(), QStringList("O1.nc|Saving..."), patience);
        control.send("%\nO2\n");
        QTRY_VERIFY(shown().endsWith("O2\n")); // goes on
        control.send("M30\n%\n");
        QTRY_COMPARE(rows().size(), 2);
        Answers slip({"Enter"});
        QVERIFY(!op_->window().close() && slip.areAllGiven());
        ::close(held);
        QTRY_COMPARE_WITH_TIMEOUT(rows(), QStringList({"O2.nc|Saved", "O1.nc|Saved"}), patience);
        QVERIFY(closes());
    }

    // Of a control that says nothing, silence ends the program; until then, and of what came before, it is unsaved.
    void silenceEndsAProgram()
    {
        std::optional<cncsim::SimulatedControl> control(std::in_place, cncsim::Settings());
        listen(*control, "Auto");
        op_->click("chkSaveByItself");
        control->send("(BEFORE)\nM30\n%\n");
        QTRY_COMPARE(shown(), QByteArray("(BEFORE)\nM30\n%\n"));
        op_->click("chkSaveByItself");
        g::mcIcons[1]->toFiles.silence = 1;
        control->send("G0 X1 (PART A)\n");
        QTRY_COMPARE_WITH_TIMEOUT(rows(), QStringList("PART A.nc|Saved"), patience);
        QTRY_VERIFY(isUnsaved()); // the one before is in no file
        control->send("%\nO2\n");
        QTRY_VERIFY(shown().endsWith("O2\n"));
        op_->click("btnNew");
        control->send("M30\n");
        QTRY_COMPARE(shown(), QByteArray("M30\n"));
        QTRY_COMPARE_WITH_TIMEOUT(rows().first(), "O2.nc|Saved, not closed", patience);
        QTRY_VERIFY(!isUnsaved());
        QCOMPARE(contentOf(path("O2.nc")), QByteArray("%\nO2\nM30\n")); // New emptied the editor only
        g::mcIcons[1]->toFiles.silence = 3600;
        control->send("O3\n");
        QTRY_VERIFY(isUnsaved());
        Answers slip({"Enter"});
        QVERIFY(!op_->window().close() && slip.areAllGiven());
        QCOMPARE(files(), QStringList({"O2.nc", "PART A.nc"}));
        control.reset(); // the port is lost
        QTRY_COMPARE_WITH_TIMEOUT(rows().first(), "O3.nc|Saved, not closed", patience);
        QCOMPARE(contentOf(path("O3.nc")), QByteArray("O3\n"));
    }

    void xmodemProgramIsSavedAtItsEnd()
    {
        cncsim::Settings punching;
        punching.protocol = cncsim::Protocol::XModemSend;
        punching.punchProgram = "%\r\nO5\r\n" + std::string(100'000, 'X') + "\r\nM30\r\n%\r\n";
        cncsim::SimulatedControl control(punching);
        listen(control, "Fanuc", 3);
        control.punch();
        QTRY_VERIFY_WITH_TIMEOUT(!shown().isEmpty(), 3 * patience);
        op_->click("btnNew"); // empties the editor only
        QTRY_COMPARE_WITH_TIMEOUT(rows(), QStringList("O5.nc|Saved"), 3 * patience);
        QCOMPARE(contentOf(path("O5.nc")), QByteArray::fromStdString(punching.punchProgram));
        QVERIFY(shown().endsWith('\x1A')); // padding and all
        QVERIFY(closes());
    }

    void openingASavedProgramThrowsNothingAway()
    {
        cncsim::SimulatedControl control({});
        listen(control);
        control.send("%\nO1\nM30\n%\n");
        QTRY_COMPARE_WITH_TIMEOUT(rows(), QStringList("O1.nc|Saved"), patience);
        control.send("O2\n"); // is still coming
        QTRY_VERIFY(shown().endsWith("O2\n"));
        const QByteArray before = shown();
        Answers slip({"Enter"});
        op_->click("btnOpenSaved");
        QVERIFY(slip.areAllGiven());
        QCOMPARE(shown(), before);
        Answers discard({"Discard"});
        op_->click("btnOpenSaved");
        QCOMPARE(shown(), QByteArray("%\nO1\nM30\n%\n"));
        control.send("M30\n%\n"); // its file is whole none the less
        QTRY_COMPARE_WITH_TIMEOUT(rows().first(), "O2.nc|Saved", patience);
        QCOMPARE(contentOf(path("O2.nc")), QByteArray("O2\nM30\n%\n"));
    }

    void folderIsAskedForWhereThereIsNone()
    {
        cncsim::SimulatedControl control({});
        listen(control);
        op_->click("chkSaveByItself");
        g::mcIcons[1]->MCOUTDIR.clear();
        Answers cancelled({""});
        op_->click("chkSaveByItself");
        QTRY_VERIFY(cancelled.areAllGiven() && !QApplication::activeModalWidget());
        QVERIFY(!Operator::find<QCheckBox>("chkSaveByItself")->isChecked());
        Answers chosen({folder_->path()});
        op_->click("chkSaveByItself");
        QTRY_VERIFY(chosen.areAllGiven() && !QApplication::activeModalWidget());
        control.send("%\nO1\nM30\n%\n");
        QTRY_COMPARE_WITH_TIMEOUT(files(), QStringList("O1.nc"), patience);
    }
};

QTEST_MAIN(ReceiveToFilesTest)
#include "e2e_receive_to_files.moc"
