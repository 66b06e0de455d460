// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Answers.h"
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "editor/ProgramEditor.h"
#include "shell/MachineChoice.h"

#include <QDir>
#include <QDropEvent>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QToolButton>
#include <QUrl>

/// The ways a program gets to a machine's send view other than by the file dialog, and how it is kept.
class ProgramsTest : public QObject
{
    Q_OBJECT
    static MachineChoice* question() { return qobject_cast<MachineChoice*>(QApplication::activeModalWidget()); }
    static QString text() { return QString::fromLatin1(Operator::find<ProgramEditor>("rt1")->wholeText()); }

    QString file(const QString& name, const QByteArray& program) const
    {
        QFile written(files_.filePath(name));
        if (!written.open(QIODevice::WriteOnly) || written.write(program) != program.size()) qFatal("no file");
        return written.fileName();
    }

    static QByteArray contentOf(const QString& path)
    {
        QFile read(path);
        return read.open(QIODevice::ReadOnly) ? read.readAll() : QByteArray();
    }

    static void dropOn(int machine, const QString& path)
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        auto* card = mcIconAt(machine);
        QDragEnterEvent enter({20, 20}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(card, &enter);
        require(enter.isAccepted(), "the card refuses the file");
        QDropEvent drop({20, 20}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(card, &drop);
    }

    static QStringList menuOf(QToolButton& button)
    {
        Q_EMIT button.menu()->aboutToShow();
        QStringList names;
        for (const auto* item : button.menu()->actions())
            names << item->text().section(u'\t', 0, 0);
        return names;
    }

    static void receive(PtyPair& line)
    {
        Operator::choose(1, "btnRX");
        line.write("O7\nM30\n");
        requireSoon([] { return text() == "O7\nM30\n"; }, "nothing arrives");
    }

    static void undo() { QTest::keyClick(Operator::find("rt1"), Qt::Key_Z, Qt::ControlModifier); }

    const QTemporaryDir files_;

private Q_SLOTS:
    void droppedOnACardItIsSentByThatMachineAndRemembered()
    {
        PtyPair first, second;
        Shop::store({Shop::machineOn(first.devicePath()), Shop::machineOn(second.devicePath())});
        Operator op;
        op.send(1, Shop::program(1500));
        op.answerNextMessage("Cancel");
        dropOn(1, file("other.nc", "M1"));
        QTRY_VERIFY(op.lastMessage.contains("is transferring a program"));
        QVERIFY(op.isShown("btnStop"));
        dropOn(2, file("O1 & 2.nc", "M30"));
        QTRY_COMPARE(text(), "M30");
        QVERIFY(!QApplication::activeModalWidget());
        QTRY_COMPARE(QApplication::focusWidget()->objectName(), "btnSend");
        op.press(Qt::Key_Return);
        QCOMPARE(second.readAtLeast(3), "M30");
        QTRY_VERIFY(op.isShown("btnSend"));
        op.answerNextMessage("Stop"); // the other machine's
        QVERIFY(op.window().close());

        op.restart();
        op.open(2, {});
        auto* open = op.find<QToolButton>("btnFolder");
        QCOMPARE(menuOf(*open), QStringList{"O1 && 2.nc"});
        open->menu()->actions().first()->trigger();
        QTRY_COMPARE(text(), "M30");
    }

    // The dialog opens in the folder used last; a path into another one is typed.
    void sameNameInTheFolderUsedLastIsNoOtherChoice()
    {
        PtyPair line;
        Shop::store({Shop::machineOn(line.devicePath())});
        Operator op;
        dropOn(1, file("program.nc", "M1"));
        QTRY_VERIFY(op.isShown("rt1"));
        QTRY_COMPARE(text(), "M1");
        op.open(1, "M2");
        QCOMPARE(text(), "M2");
    }

    void filesOfAStartAreAskedAboutOneByOneAndBehindNoQuestion()
    {
        PtyPair line;
        Shop::store({Shop::machineOn("1"), Shop::machineOn(line.devicePath())});
        Operator op;
        op.open(2, "M0");
        op.click("btnLock");
        op.click("btnFolder"); // keeps the operator from the main window
        auto* dialog = QApplication::activeModalWidget();
        op.delegate().openPrograms({file("a.nc", "M1"), "/no/such/file.nc", file("b.nc", "M2")});
        QCoreApplication::processEvents();
        QVERIFY(QApplication::activeModalWidget() == dialog && text() == "M0");
        QTest::keyClick(dialog->findChild<QLineEdit*>("fileNameEdit"), Qt::Key_Escape);
        QTRY_VERIFY(question());
        question()->findChild<QListWidget*>("lstMachines")->setCurrentRow(1);
        op.answerNextMessage("OK");
        QTest::keyClick(question()->findChild<QListWidget*>(), Qt::Key_Return);
        QTRY_VERIFY(op.lastMessage.contains("/no/such/file.nc"));
        QTRY_VERIFY(question());
        QCOMPARE(text(), "M1");
        QTest::keyClick(question(), Qt::Key_Escape);
        QTRY_VERIFY(!question());
        QCOMPARE(text(), "M1");
    }

    void savedProgramShowsItsPlaceAndTheFolderIsRemembered()
    {
        PtyPair line;
        Shop::store({Shop::machineOn(line.devicePath())});
        Operator op;
        receive(line);
        QTRY_COMPARE(op.find<QLabel>("lblSaved")->text(), "Not saved");
        const QDir folder(files_.path());
        QVERIFY(folder.mkpath("programs"));
        const QString path = folder.filePath("programs/other.nc");
        const Answers answers({path});
        op.click("btnSave");
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(answers.proposed, QStringList{"O7.nc"});
        QCOMPARE(op.find<QLineEdit>("txtPath")->text(), path);
        QCOMPARE(op.find<QLabel>("lblSaved")->text(), "Saved");
        op.restart();
        receive(line);
        op.click("btnSave");
        const auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog && dialog->labelText(QFileDialog::LookIn) == "Save in:");
        QCOMPARE(dialog->directory(), QDir(folder.filePath("programs")));
    }

    void nextProgramIsNotSavedIntoTheFirstOnesFile()
    {
        PtyPair line;
        Shop::store({Shop::machineOn(line.devicePath())});
        Operator op;
        const auto isQuiet = [&op] { return op.find<QLabel>("lblTransferState")->text() == "Waiting for bytes"; };
        const QString first = files_.filePath("first.nc"), both = files_.filePath("both.nc");
        receive(line);
        QTRY_VERIFY_WITH_TIMEOUT(isQuiet(), 20000);
        const Answers firstName({first});
        op.click("btnSave");
        QTRY_COMPARE(op.find<QLabel>("lblSaved")->text(), "Saved");
        line.write("O8\n");
        QTRY_COMPARE(text(), "O7\nM30\nO8\n");
        QTRY_VERIFY_WITH_TIMEOUT(isQuiet(), 20000);
        const Answers answers({"Save", both});
        QVERIFY(op.window().close() && answers.areAllGiven());
        QCOMPARE(contentOf(first), "O7\nM30\n");
        QCOMPARE(contentOf(both), "O7\nM30\nO8\n");
    }

    void newAsksNothingAndIsTakenBackByUndo()
    {
        PtyPair line;
        Shop::store({Shop::machineOn(line.devicePath())});
        Operator op;
        receive(line);
        op.click("btnNew");
        line.write("O8\n"); // goes on arriving
        QTRY_COMPARE(text(), "O8\n");
        undo();
        QCOMPARE(text(), "O7\nM30\nO8\n");

        op.restart();
        op.open(1, "M30\n");
        op.click("btnLock");
        QTest::keyClicks(op.find("rt1"), "O9 ");
        op.click("btnNew");
        QVERIFY(!QApplication::activeModalWidget() && text().isEmpty());
        undo();
        QCOMPARE(text(), "O9 M30\n");
        QTRY_COMPARE(op.find<QLabel>("lblSaved")->text(), "Not saved");
    }
};

QTEST_MAIN(ProgramsTest)
#include "e2e_programs.moc"
