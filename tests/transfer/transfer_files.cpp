// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MessageBoxes.h"
#include "transfer/TransferRig.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QUrl>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

/// What gets into the editor from the line or a file, and what of it is saved.
class FilesTest : public QObject
{
    Q_OBJECT

    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<cannot be read>");
    }

    static bool drop(const TransferRig& rig, const QList<QUrl>& urls, Qt::DropAction action = Qt::CopyAction)
    {
        QMimeData data;
        data.setText("G0 X0"); // file managers add a text
        if (!urls.isEmpty()) data.setUrls(urls);
        QDragEnterEvent enter(QPoint(10, 10), action, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(rig.editor->viewport(), &enter);
        QDropEvent dropped(QPointF(10, 10), action, &data, Qt::LeftButton, Qt::NoModifier);
        dropped.ignore();
        QApplication::sendEvent(rig.editor->viewport(), &dropped); // whatever the first answer was
        return enter.isAccepted() && dropped.isAccepted();
    }

private Q_SLOTS:
    void punchedProgramIsShownAndSavedAsItCame()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("O1.nc");
        QByteArray program("\0%\x7F\t\x1A\x11\x06\x15\x18\x04\r\n", 12);
        for (int line = 0; line < 500; ++line)
            program += "N" + QByteArray::number(line) + " G1 X1.5\r\n";
        TransferRig rig;
        rig.start(false);
        QVERIFY(!rig.isShown("boxTxButtons"));
        rig.pty.write(program);
        QTRY_COMPARE(rig.editor->wholeText(), program);
        QCOMPARE(rig.editor->caret(), program.size()); // the view followed
        QCOMPARE(rig.readAll(), QByteArray());         // nothing is answered
        rig.editor->moveCaretTo(0);
        rig.deliver("M30");
        QCOMPARE(rig.editor->firstVisible(), 0); // the operator's place is left alone
        rig.view->saveFile(path);
        QCOMPARE(contentOf(path), program + "M30");
        rig.machine->MCOUTDIR = "file:///"; // takes precedence over the last file's folder
        rig.click("btnSave");
        QCOMPARE(rig.find<QFileDialog>("saveDialog")->directory(), QDir::root());
        rig.click("btnNew");
        for (const char* chunk : {"A\n\n\nB", "A\r\r", "\r", "\n", "\n"})
            rig.deliver(chunk); // doubled line ends collapse within a chunk only
        rig.view->saveFile(path);
        QCOMPARE(contentOf(path), QByteArray("A\n\nBA\r\r\n\n"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"O1.nc"});
    }

    void failedSaveIsReportedAndHarmsNothing()
    {
        const QTemporaryDir folder;
        TransferRig rig;
        rig.start(false);
        rig.deliver("O0");
        rig.view->saveFile(folder.filePath("old.nc"));
        const QByteArray received = "O0" + QByteArray("O1 X1\r\n").repeated(2'000);
        rig.deliver(received.mid(2));
        MessageBoxes boxes("OK");
        rlimit before;
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit full{10'000, before.rlim_max}; // no file can grow beyond it
        ::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &full);
        rig.view->saveFile(folder.filePath("old.nc"));
        ::setrlimit(RLIMIT_FSIZE, &before);
        rig.view->saveFile(folder.filePath("gone/O1.nc"));
        QCOMPARE(boxes.texts.size(), 2);
        QVERIFY2(boxes.texts.first().contains("File too large"), qPrintable(boxes.texts.first()));
        QCOMPARE(rig.editor->wholeText(), received);
        QCOMPARE(contentOf(folder.filePath("old.nc")), QByteArray("O0"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"old.nc"});
    }

    void openedProgramIsLockedAndRewound()
    {
        TransferRig rig;
        rig.startWith("G0\nG1\n");
        const QTemporaryDir folder;
        const QByteArray pipe = folder.filePath("pipe").toLocal8Bit(); // opening it would wait for a writer
        QVERIFY(::mkfifo(pipe.constData(), 0600) == 0);
        for (const char* path : {"/no such file", "/", "/dev/zero", pipe.constData()}) // change nothing
            rig.view->openFile(QString::fromLocal8Bit(path));
        QCOMPARE(rig.editor->wholeText(), QByteArray("G0\nG1\n"));
        QVERIFY(rig.find<QLineEdit>("txtPath")->text().endsWith("program.nc"));
        rig.editor->moveCaretTo(4);
        rig.chooseStart(1);
        rig.open("O1\r\n\r\nM30");
        QTest::keyClicks(rig.editor, "X");
        QCOMPARE(rig.editor->wholeText(), QByteArray("O1\n\nM30"));
        QVERIFY(rig.view->textLocked() && !rig.find<QWidget>("btnNew")->isEnabled());
        QVERIFY(rig.editor->caret() == 0 && rig.chosenStart() == 0);
        rig.click("btnLock");
        QTest::keyClicks(rig.editor, "N5 ");
        rig.click("btnSend");
        QCOMPARE(rig.readUntilIdle(), QByteArray("N5 O1\r\n\r\nM30"));
    }

    void oneDroppedFileIsOpened()
    {
        TransferRig rig;
        rig.startWith("O7\nM30\n");
        const QUrl file = QUrl::fromLocalFile(rig.find<QLineEdit>("txtPath")->text());
        QVERIFY(!drop(rig, {file})); // locked
        rig.click("btnLock");
        QTest::keyClicks(rig.editor, "X");
        for (const char* url : {"file:///tmp", "http://host/O1.nc", "file:///no%20such%20file"})
            QVERIFY2(!drop(rig, {QUrl(url)}), url);
        QVERIFY(!drop(rig, {}) && !drop(rig, {file, file}) && !drop(rig, {file}, Qt::MoveAction));
        QCOMPARE(rig.editor->wholeText(), QByteArray("XO7\nM30\n"));
        rig.sendUntilHeld(2);
        QVERIFY(!drop(rig, {file}));
        rig.click("btnStop");
        for (const char* answer : {"Enter", "Discard"}) { // Enter keeps what was typed
            MessageBoxes boxes(answer);
            QVERIFY(drop(rig, {file}));
            QTRY_COMPARE(boxes.texts.size(), 1);
            QTRY_VERIFY(!QApplication::activeModalWidget());
            QCOMPARE(rig.editor->wholeText() == "O7\nM30\n", boxes.texts.size() == 1 && answer[0] == 'D');
        }
    }
};

QTEST_MAIN(FilesTest)
#include "transfer_files.moc"
