// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/RecentPrograms.h"

#include <QTest>

/// The programs opened last, kept from one start of the program to the next.
class RecentTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void newestComesFirstAndTenAreKept()
    {
        MachineRecord machine;
        for (int n = 1; n <= 12; ++n)
            RecentPrograms::add(machine, QStringLiteral("/srv/O%1.nc").arg(n));
        RecentPrograms::add(machine, QStringLiteral("/srv/O5.nc"));
        RecentPrograms::add(machine, QStringLiteral("/srv/two\nlines.nc")); // would be read back as two
        QCOMPARE(machine.recentPrograms.size(), 10);
        QCOMPARE(machine.recentPrograms.mid(0, 3), QStringList({"/srv/O5.nc", "/srv/O12.nc", "/srv/O11.nc"}));
        QCOMPARE(machine.recentPrograms.last(), "/srv/O3.nc");
    }

    void machineGetsOnlyItsOwnPrograms_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("mill");
        QTest::addColumn<QStringList>("lathe");
        const QStringList none;
        QTest::newRow("both") << "[Mill]\n/1\n/2\n[Lathe]\n/3\n" << QStringList{"/1", "/2"} << QStringList{"/3"};
        QTest::newRow("renamed by hand") << "[Saw]\n/1\n[Lathe]\n/3\n" << none << QStringList{"/3"};
        QTest::newRow("another order") << "[Lathe]\n/3\n[Mill]\n/1\n" << none << none;
        QTest::newRow("more machines") << "[Mill]\n/1\n[Lathe]\n[Saw]\n/3\n" << QStringList{"/1"} << none;
        QTest::newRow("nothing") << "" << none << none;
        QTest::newRow("something else") << "/1\nMill\n\n[Mill\n" << none << none;
    }

    void machineGetsOnlyItsOwnPrograms()
    {
        QFETCH(QString, text);
        MachineRecord mill, lathe;
        mill.MCNAME = "Mill";
        lathe.MCNAME = "Lathe";
        RecentPrograms::read(text, {&mill, &lathe});
        QTEST(mill.recentPrograms, "mill");
        QTEST(lathe.recentPrograms, "lathe");
        const QString written = RecentPrograms::write({&mill, &lathe});
        MachineRecord again, other;
        again.MCNAME = "Mill";
        other.MCNAME = "Lathe";
        RecentPrograms::read(written, {&again, &other});
        QVERIFY(again.recentPrograms == mill.recentPrograms && other.recentPrograms == lathe.recentPrograms);
    }
};

QTEST_APPLESS_MAIN(RecentTest)
#include "config_recent.moc"
