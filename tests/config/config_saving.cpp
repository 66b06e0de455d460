// SPDX-License-Identifier: GPL-3.0-or-later
// Saving that is cut off or cannot be done: the stored machine list is the old one or the new one, always whole.
#include "config/g.h"
#include "platform/Preferences.h"

#include <QDir>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdio>
#include <random>
#include <sys/resource.h>

namespace
{
constexpr int killPoints = 250;
constexpr int machineCount = 40; // enough that one write does not carry all of it at once

void fillList(const QString& name)
{
    g::mcIcons.clear();
    for (int machine = 0; machine <= machineCount; ++machine) {
        g::mcIcons.append(g::makeMcIcon());
        g::mcIcons.last()->MCNAME = name;
    }
}

// Saves two lists in turn until it is killed.
[[noreturn]] void saveForEver()
{
    for (bool first = true;; first = !first) {
        fillList(first ? QStringLiteral("first") : QStringLiteral("second"));
        g::saveAllMcSettings();
        std::puts("saved");
        std::fflush(stdout);
    }
}

// Saves once where the disk takes no more than a few bytes.
int saveOnFullDisk()
{
    const rlimit limit{64, 64};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_IGN); // the write fails instead
    fillList(QStringLiteral("new"));
    g::saveAllMcSettings();
    return 0;
}
} // namespace

class SavingTest : public QObject
{
    Q_OBJECT
    QTemporaryDir home_;

    void start(QProcess& process, const QString& job)
    {
        process.start(QCoreApplication::applicationFilePath(), {job, home_.path()});
        QVERIFY(process.waitForStarted());
    }

    // What the next start of the program finds; the file is read anew, past every cache.
    QString storedName()
    {
        QProcess reader;
        reader.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--read"), home_.path()});
        return reader.waitForFinished() ? QString::fromUtf8(reader.readAllStandardOutput()) : QString();
    }

private Q_SLOTS:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home_.path()); }
    void killedAtAnyMoment();
    void fullDiskKeepsTheOldList();
    void readOnlyFolderKeepsTheOldListAndDoesNotHang();
};

void SavingTest::killedAtAnyMoment()
{
    std::minstd_rand random(7);
    int first = 0;
    for (int point = 0; point < killPoints; ++point) {
        QProcess writer;
        start(writer, QStringLiteral("--save"));
        QVERIFY(writer.waitForReadyRead()); // the first list is whole
        QTest::qSleep(static_cast<int>(random() % 8));
        writer.kill();
        QVERIFY(writer.waitForFinished());
        const QString name = storedName();
        QVERIFY2(name == "first" || name == "second", qPrintable(name));
        first += name == "first";
    }
    QVERIFY2(first > 0 && first < killPoints, "the kills always met the same list");
}

void SavingTest::fullDiskKeepsTheOldList()
{
    const QString before = storedName();
    QProcess writer;
    start(writer, QStringLiteral("--save-on-full-disk"));
    QVERIFY(writer.waitForFinished());
    QCOMPARE(writer.exitStatus(), QProcess::NormalExit);
    QCOMPARE(storedName(), before);
}

void SavingTest::readOnlyFolderKeepsTheOldListAndDoesNotHang()
{
    const QString before = storedName();
    const QDir folder(home_.filePath(QStringLiteral("Varnock")));
    // Not by permissions, which the superuser of a build machine does not feel: the folder is gone, a file in its
    // place.
    QVERIFY(QDir(home_.path()).rename(QStringLiteral("Varnock"), QStringLiteral("kept")));
    QFile inTheWay(folder.path());
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    fillList(QStringLiteral("new"));
    g::saveAllMcSettings();
    QVERIFY(inTheWay.remove());
    QVERIFY(QDir(home_.path()).rename(QStringLiteral("kept"), QStringLiteral("Varnock")));
    QCOMPARE(storedName(), before);
}

namespace
{
int run(const QString& job)
{
    Preferences::dropLeftoverLock(); // as the program does at its start
    if (job == QLatin1String("--save")) saveForEver();
    if (job == QLatin1String("--save-on-full-disk")) return saveOnFullDisk();
    g::readAllMcSettings();
    const auto& machines = g::mcIcons;
    // The name that all machines have, if the list is whole.
    bool isWhole = machines.size() == machineCount + 1;
    for (qsizetype index = 2; index < machines.size(); ++index)
        isWhole = isWhole && machines[index]->MCNAME == machines[1]->MCNAME;
    std::fputs(isWhole ? qPrintable(machines[1]->MCNAME) : "not whole", stdout);
    return 0;
}
} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const auto arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && QDir(arguments[2]).exists()) {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, arguments[2]);
        return run(arguments[1]);
    }
    SavingTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "config_saving.moc"
