// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MessageBoxes.h"
#include "transfer/TransferRig.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QScrollBar>
#include <QUrl>

#include <algorithm>
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace
{
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<cannot be read>");
}

// Nothing stops the superuser, whom CI runs as: while this lives, files are opened as a user without rights would.
class Unprivileged
{
public:
    explicit Unprivileged(const QString& folder)
    {
        if (::geteuid() != 0) return;
        for (const QString& path : {folder, folder + "/taken", folder + "/locked", folder + "/taken/old.nc"})
            if (::chown(qPrintable(path), nobody, nobody) != 0) qFatal("chown");
        if (::seteuid(nobody) != 0) qFatal("seteuid");
    }
    ~Unprivileged()
    {
        if (::geteuid() == nobody && ::seteuid(0) != 0) qFatal("seteuid");
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    static constexpr uid_t nobody = 65534;
};

// While this lives, no file can grow beyond that size.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{std::min(bytes, before_.rlim_max), before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &before_); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
};
} // namespace

class ReceivingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void punchedProgramAppearsAsItArrives();
    void doubledLineEndsCollapseWithinAChunkOnly();
    void receiveViewCannotSend();
    void sendViewDropsWhatItHasNoUseFor();
    void reboundViewOnlyReceives();
    void operatorsPlaceIsLeftAlone();
    void savedFileHoldsEveryByte();
    void saveDialogStartsInTheMachinesFolder_data();
    void saveDialogStartsInTheMachinesFolder();
    void failedSaveIsToldAndHarmsNothing_data();
    void failedSaveIsToldAndHarmsNothing();
};

void ReceivingTest::punchedProgramAppearsAsItArrives()
{
    TransferRig rig;
    rig.start(false);
    QCOMPARE(rig.machine->activity, TransferActivity::Receiving);
    QByteArray program;
    for (int line = 0; line < 500; ++line)
        program += "N" + QByteArray::number(line) + " G1 X1.5\r\n";
    rig.pty.write(program);
    QTRY_COMPARE(rig.editor->wholeText(), program);
    QTRY_VERIFY(rig.text("lblStatus").contains("501 lines"));
    QCOMPARE(rig.editor->caret(), program.size()); // the view went along
    QCOMPARE(rig.readAll(), QByteArray());
}

void ReceivingTest::doubledLineEndsCollapseWithinAChunkOnly()
{
    TransferRig rig;
    rig.start(false);
    for (const char* chunk : {"A\n\n\nB", "A\r\r", "\r", "\n", "\n"})
        rig.deliver(chunk);
    QCOMPARE(rig.editor->wholeText(), QByteArray("A\n\nBA\r\r\n\n"));
    rig.deliver({});
    QCOMPARE(rig.editor->wholeText().size(), 9);
}

void ReceivingTest::receiveViewCannotSend()
{
    TransferRig rig;
    rig.start(false);
    QVERIFY(!rig.isShown("boxTxButtons") && !rig.isShown("btnSend") && !rig.isShown("btnStop"));
    QVERIFY(!rig.view->dncRunning());
    rig.deliver("\x11O1\x06\x15\x18\x04");
    QCOMPARE(rig.readAll(), QByteArray());
    QVERIFY(rig.editor->wholeText().contains("\x11O1")); // no byte is dropped
}

void ReceivingTest::sendViewDropsWhatItHasNoUseFor()
{
    TransferRig rig;
    rig.start();
    rig.open("G0\n");
    rig.deliver("\x11\x06\x15\x18 O1\n");
    QCOMPARE(rig.editor->wholeText(), QByteArray("G0\n"));
    QVERIFY(!rig.view->dncRunning());
    QCOMPARE(rig.readAll(), QByteArray());
}

void ReceivingTest::reboundViewOnlyReceives()
{
    TransferRig rig;
    rig.start();
    rig.view->initialize(false, 1);
    rig.deliver("O1");
    QCOMPARE(rig.editor->wholeText(), QByteArray("O1")); // once: not heard twice
    rig.view->setDncRunning(true);
    rig.view->txState.State = viewTX::TxState::txState_sending_body;
    rig.child->port->nc->post("TxOnComm", rig.child->port.get());
    QCOMPARE(rig.view->txState.State, viewTX::TxState::txState_sending_body);
    QCOMPARE(rig.readAll(), QByteArray());
}

void ReceivingTest::operatorsPlaceIsLeftAlone()
{
    TransferRig rig;
    rig.start(false);
    rig.deliver(QByteArray("G0\r\n").repeated(1000));
    auto* bar = rig.editor->verticalScrollBar();
    QTRY_VERIFY(bar->value() > 900);
    rig.editor->moveCaretTo(0);
    QTRY_COMPARE(bar->value(), 0);
    rig.deliver(QByteArray("G1\r\n").repeated(100));
    QCOMPARE(bar->value(), 0);
    QCOMPARE(rig.editor->caret(), 0);
}

void ReceivingTest::savedFileHoldsEveryByte()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("O1.nc");
    TransferRig rig;
    rig.start(false);
    const QByteArray chunk("%\r\n\0O1\x7F\t\r\n\x1A\x13%", 13);
    rig.deliver(chunk);
    rig.view->saveFile(path);
    QCOMPARE(contentOf(path), chunk);
    rig.click("btnNew");
    rig.deliver("M30");
    rig.view->saveFile(path); // replaces the longer file as a whole
    QCOMPARE(contentOf(path), QByteArray("M30"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"O1.nc"});
}

void ReceivingTest::saveDialogStartsInTheMachinesFolder_data()
{
    QTest::addColumn<bool>("asUrl");
    QTest::newRow("path") << false;
    QTest::newRow("URL") << true;
}

void ReceivingTest::saveDialogStartsInTheMachinesFolder()
{
    QFETCH(bool, asUrl);
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir("shop floor"));
    const QString programs = folder.filePath("shop floor");
    TransferRig rig;
    rig.machine->MCOUTDIR = asUrl ? QUrl::fromLocalFile(programs).toString(QUrl::FullyEncoded) : programs;
    rig.start(false);
    rig.deliver("O1\r\n");
    rig.click("btnSave");
    auto* dialog = rig.view->findChild<QFileDialog*>("saveDialog");
    QVERIFY(dialog && dialog->isVisible());
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    QTest::keyClicks(name, "O1.nc");
    QTest::keyClick(name, Qt::Key_Return);
    QTRY_COMPARE(contentOf(programs + "/O1.nc"), QByteArray("O1\r\n"));
}

void ReceivingTest::failedSaveIsToldAndHarmsNothing_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("folder is gone") << "gone/O1.nc";
    QTest::newRow("a folder has that name") << "taken";
    QTest::newRow("folder is read-only") << "locked/O1.nc";
    QTest::newRow("disk is full") << "taken/old.nc";
}

void ReceivingTest::failedSaveIsToldAndHarmsNothing()
{
    QFETCH(QString, path);
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir("taken") && QDir(folder.path()).mkdir("locked"));
    const QByteArray old("O0 (the program of last week)\r\n");
    QFile file(folder.filePath("taken/old.nc"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(old) == old.size());
    file.close();
    QFile(folder.filePath("locked")).setPermissions(QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    TransferRig rig;
    rig.start(false);
    const QByteArray received = QByteArray("O1 X1\r\n").repeated(20'000);
    rig.deliver(received);
    MessageBoxes boxes("OK");
    {
        const Unprivileged user(folder.path());
        const FullDisk full(path == "taken/old.nc" ? 100'000 : RLIM_INFINITY);
        rig.view->saveFile(folder.filePath(path));
    }
    QCOMPARE(boxes.texts.size(), 1);
    const QString expected = "Could not save file Optional(file://" + folder.filePath(path) + ")\n\n";
    QVERIFY2(boxes.texts[0].startsWith(expected), qPrintable(boxes.texts[0]));
    QVERIFY(boxes.texts[0].size() > expected.size()); // says why
    QCOMPARE(rig.editor->wholeText(), received);
    QCOMPARE(contentOf(folder.filePath("taken/old.nc")), old);
    QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), (QStringList{"locked", "taken"}));
    // Nothing half written stays behind.
    QCOMPARE(QDir(folder.filePath("taken")).entryList(QDir::Files | QDir::Hidden), QStringList{"old.nc"});

    QVERIFY(QDir(folder.path()).mkdir("other"));
    rig.view->saveFile(folder.filePath("other/O1.nc")); // another place is the way out
    QCOMPARE(contentOf(folder.filePath("other/O1.nc")), received);
    QCOMPARE(boxes.texts.size(), 1);
}

QTEST_MAIN(ReceivingTest)
#include "transfer_receiving.moc"
