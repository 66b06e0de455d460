// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/MachineRecord.h"
#include "config/ReceiveToFiles.h"

#include <QTest>

/// How a machine saves by itself what comes, kept from one start of the program to the next.
class ReceiveToFilesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void isReadAsItWasWritten()
    {
        MachineRecord mill, lathe, none;
        mill.MCNAME = "Mill";
        lathe.MCNAME = "Lathe";
        lathe.toFiles = {true, "/srv/O 1", "", 30, 5};
        QCOMPARE(ReceiveToFiles::write({&mill, &none}), QString());
        const QString text = ReceiveToFiles::write({&mill, &lathe});
        MachineRecord first, second, third;
        first.MCNAME = third.MCNAME = "Mill";
        second.MCNAME = "Lathe";
        ReceiveToFiles::read(text, {&first, &second});
        QVERIFY(first.toFiles == mill.toFiles && second.toFiles == lathe.toFiles);
        ReceiveToFiles::read(text, {&third, &first}); // another machine is at its place now
        QVERIFY(first.toFiles == ReceiveToFiles());
        third.takeSettings(lathe); // a duplicate
        QVERIFY(third.toFiles == lathe.toFiles);
    }

    void nonsenseIsLeftOut_data()
    {
        QTest::addColumn<QString>("line");
        for (const char* line :
             {"on=TRUE", "silence=0", "silence=x", "silence=99999999999", "copies=0", "copies=1000", "x"})
            QTest::newRow(line) << line;
    }

    void nonsenseIsLeftOut()
    {
        QFETCH(QString, line);
        MachineRecord machine;
        ReceiveToFiles::read("[CNC1]\n" + line + "\n", {&machine});
        QVERIFY(machine.toFiles == ReceiveToFiles());
    }

    void folderIsTheProgramFolderUnlessChosen_data()
    {
        QTest::addColumn<QString>("programs");
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("folder");
        QTest::newRow("none") << ""
                              << ""
                              << "";
        QTest::newRow("programs") << "/srv/nc"
                                  << ""
                                  << "/srv/nc";
        QTest::newRow("programs as a URL") << "file:///srv/nc%20a"
                                           << ""
                                           << "/srv/nc a";
        QTest::newRow("chosen") << "/srv/nc"
                                << "/srv/in"
                                << "/srv/in";
    }

    void folderIsTheProgramFolderUnlessChosen()
    {
        QFETCH(QString, programs);
        QFETCH(QString, chosen);
        MachineRecord machine;
        machine.MCOUTDIR = programs;
        machine.toFiles.folder = chosen;
        QTEST(ReceiveToFiles::folderOf(machine), "folder");
    }
};

QTEST_APPLESS_MAIN(ReceiveToFilesTest)
#include "config_receive_to_files.moc"
