// SPDX-License-Identifier: GPL-3.0-or-later
// Programs that are saved by themselves: whole or not at all, and nothing is overwritten without a copy of it.
#include "history/HistoryFile.h"
#include "history/KeptFiles.h"
#include "tests/history/Entries.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using Outcome = KeptFiles::Result::Outcome;

namespace
{
const QString name = QStringLiteral("O1.nc");

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<cannot be read>");
}

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) qFatal("no file");
}

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

KeptFiles::Result save(const QString& folder, const QByteArray& bytes, int copies = 20)
{
    return KeptFiles::save({folder, name, bytes, copies});
}

// One of a row of programs, of some size, each unlike the others.
QByteArray program(int number)
{
    return QByteArray("O1\nN" + QByteArray::number(number) + " G1\n").repeated(10'000);
}

// Saves one after the other, and notes each in the history, until it is killed. Prints a byte for each.
int saveForEver(const QString& folder)
{
    HistoryFile history(QDir(folder).filePath("history.sqlite"));
    if (history.open() != HistoryFile::Result::Ok) return 1;
    for (int number = 0;; ++number) {
        if (save(folder + "/programs", program(number)).outcome != Outcome::Saved) return 2;
        if (history.add({Entries::make(number, number)}) != HistoryFile::Result::Ok) return 3;
        if (::write(STDOUT_FILENO, "s", 1) != 1) return 4;
    }
}

// A disk of its own for a test, small or read-only. Root alone may mount one.
class Disk
{
public:
    explicit Disk(const QString& folder) : path_(folder.toLocal8Bit()) {}
    ~Disk()
    {
        if (isMounted_) ::umount2(path_.constData(), MNT_DETACH);
    }
    bool mount(unsigned long flags = 0)
    {
        const unsigned long again = isMounted_ ? MS_REMOUNT : 0;
        const bool isDone = ::mount("tmpfs", path_.constData(), "tmpfs", flags | again, "size=64k") == 0;
        isMounted_ = isMounted_ || isDone;
        return isDone;
    }

private:
    const QByteArray path_;
    bool isMounted_ = false;
};
} // namespace

class KeptFilesTest : public QObject
{
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> temporary_;
    QString folder() const { return temporary_->path(); }
    QString path(const QString& file = name) const { return temporary_->filePath(file); }

private Q_SLOTS:
    void init() { temporary_ = std::make_unique<QTemporaryDir>(); }

    void olderOnesAreKeptAndTheOldestGo()
    {
        QCOMPARE(save(folder(), "A").kept, 0);
        QCOMPARE(save(folder(), "A").outcome, Outcome::Same);
        QCOMPARE(filesIn(folder()), QStringList{name});
        write(path("O1.nc.~x~"), "no copy");
        write(path("O1.nc.~07~"), "no copy");
        write(path("O11.nc.~9~"), "another's");
        for (const auto& [bytes, kept] : {std::pair{"B", 1}, {"A", 2}, {"C", 3}, {"D", 4}}) {
            const auto result = save(folder(), bytes, 2);
            QCOMPARE(result.outcome, Outcome::Saved);
            QCOMPARE(result.path, path());
            QCOMPARE(result.kept, kept);
        }
        QCOMPARE(filesIn(folder()),
                 QStringList({"O1.nc", "O1.nc.~07~", "O1.nc.~3~", "O1.nc.~4~", "O1.nc.~x~", "O11.nc.~9~"}));
        QCOMPARE(contentOf(path()), QByteArray("D"));
        QCOMPARE(contentOf(KeptFiles::keptPath(path(), 4)), QByteArray("C"));
        QCOMPARE(contentOf(KeptFiles::keptPath(path(), 3)), QByteArray("A"));
        QCOMPARE(save(folder(), "E", 0).kept, 5); // none at all is not possible
        QCOMPARE(contentOf(path("O1.nc.~5~")), QByteArray("D"));
    }

    void whatHasTheNameStays_data()
    {
        QTest::addColumn<QString>("taken");
        for (const char* taken : {"folder", "link", "link to nothing", "pipe"})
            QTest::newRow(taken) << taken;
    }

    void whatHasTheNameStays()
    {
        QFETCH(QString, taken);
        const QByteArray local = path().toLocal8Bit();
        write(path("other"), "other");
        if (taken == "folder") QVERIFY(QDir(folder()).mkdir(name));
        if (taken == "link") QVERIFY(QFile::link(path("other"), path()));
        if (taken == "link to nothing") QVERIFY(QFile::link(path("nothing"), path()));
        if (taken == "pipe") QVERIFY(::mkfifo(local.constData(), 0600) == 0);
        const auto before = filesIn(folder());
        const auto result = save(folder(), "A");
        QCOMPARE(result.outcome, Outcome::Failed);
        QVERIFY2(result.error.contains("has this name"), qPrintable(result.error));
        QCOMPARE(filesIn(folder()), before);
        QCOMPARE(contentOf(path("other")), QByteArray("other"));
    }

    void nameIsNoPath_data()
    {
        QTest::addColumn<QString>("bad");
        for (const char* bad : {"", ".", "..", ".hidden", "../O1.nc", "a/O1.nc"})
            QTest::newRow(bad) << bad;
    }

    void nameIsNoPath()
    {
        QFETCH(QString, bad);
        QVERIFY(QDir(folder()).mkpath("inner/a"));
        QCOMPARE(KeptFiles::save({path("inner"), bad, "A", 20}).outcome, Outcome::Failed);
        QCOMPARE(filesIn(folder()), QStringList{"inner"});
        QCOMPARE(filesIn(path("inner/a")), QStringList());
    }

    void folderThatIsGoneIsTold()
    {
        QCOMPARE(save(path("gone"), "A").error, "the folder is not there");
        write(path("file"), "no folder");
        QCOMPARE(save(path("file"), "A").error, "the folder is not there");
    }

    void fullDiskLeavesTheOldFile_data()
    {
        QTest::addColumn<bool>("isOld");
        QTest::newRow("new file") << false;
        QTest::newRow("old file") << true;
    }

    void fullDiskLeavesTheOldFile()
    {
        QFETCH(bool, isOld);
        Disk disk(folder());
        const bool isDisk = disk.mount();
        if (isOld) QCOMPARE(save(folder(), "old").outcome, Outcome::Saved);
        rlimit before;
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit full{32'000, before.rlim_max}; // no file can grow beyond it
        ::signal(SIGXFSZ, SIG_IGN);
        if (!isDisk) ::setrlimit(RLIMIT_FSIZE, &full);
        const auto result = save(folder(), program(1));
        ::setrlimit(RLIMIT_FSIZE, &before);
        QCOMPARE(result.outcome, Outcome::Failed);
        QVERIFY2(result.error == qt_error_string(isDisk ? ENOSPC : EFBIG), qPrintable(result.error));
        QCOMPARE(filesIn(folder()), isOld ? QStringList{name} : QStringList());
        if (isOld) QCOMPARE(contentOf(path()), QByteArray("old"));
    }

    void readOnlyFolderIsTold()
    {
        Disk disk(folder());
        const bool isDisk = disk.mount();
        write(path(), "old");
        const bool isReadOnly =
            isDisk ? disk.mount(MS_RDONLY) : ::chmod(folder().toLocal8Bit().constData(), 0500) == 0 && ::getuid() != 0;
        if (!isReadOnly) QSKIP("root without the right to mount may write everywhere");
        const auto result = save(folder(), "new");
        ::chmod(folder().toLocal8Bit().constData(), 0700);
        QCOMPARE(result.outcome, Outcome::Failed);
        QCOMPARE(result.error, qt_error_string(isDisk ? EROFS : EACCES));
        QCOMPARE(contentOf(path()), QByteArray("old"));
    }

    // Two machines, each with a program of the same name: every one of them is there afterwards.
    void nothingIsLostBetweenTwoMachines()
    {
        std::vector<std::thread> machines;
        for (int machine = 0; machine < 2; ++machine)
            machines.emplace_back([this, machine] {
                for (int number = 0; number < 40; ++number)
                    save(folder(), "O1 " + QByteArray::number(2 * number + machine), 100);
            });
        for (auto& machine : machines)
            machine.join();
        QSet<QByteArray> programs;
        for (const auto& file : filesIn(folder()))
            programs << contentOf(path(file));
        QCOMPARE(programs.size(), 80);
        QCOMPARE(filesIn(folder()).size(), 80);
    }

    void rightsStayAsTheyWere()
    {
        save(folder(), "A");
        QVERIFY(QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
        const auto before = QFile::permissions(path());
        save(folder(), "B");
        QCOMPARE(QFile::permissions(path()), before);
    }

    // At any moment: what was said to be saved is there, and each file is whole.
    void killedProgramLeavesWholeFiles()
    {
        for (int kill = 0; kill < 100; ++kill) {
            init();
            QVERIFY(QDir(folder()).mkdir("programs"));
            QProcess writer;
            writer.start(QCoreApplication::applicationFilePath(), {folder()});
            QByteArray said;
            const int wanted = static_cast<int>(QRandomGenerator::global()->bounded(1, 4));
            while (said.size() < wanted && writer.waitForReadyRead())
                said += writer.readAll();
            QVERIFY2(said.size() >= wanted, qPrintable(QString::number(writer.exitCode())));
            ::usleep(QRandomGenerator::global()->bounded(8'000u)); // somewhere in the next ones
            writer.kill();
            QVERIFY(writer.waitForFinished());
            said += writer.readAll();

            QSet<QByteArray> whole;
            for (const auto& file : filesIn(path("programs"))) {
                if (file.startsWith(u'.')) continue; // one that has not got its name
                const QByteArray bytes = contentOf(path("programs/" + file));
                const int number = bytes.mid(4).left(bytes.indexOf(' ') - 4).toInt();
                QVERIFY2(bytes == program(number), qPrintable(file));
                whole << bytes;
            }
            for (int number = 0; number < said.size(); ++number)
                QVERIFY2(whole.contains(program(number)), qPrintable(QString::number(number)));
            QVERIFY(QFile::exists(path("programs/" + name)));
            HistoryFile history(path("history.sqlite"));
            QCOMPARE(history.open(), HistoryFile::Result::Ok);
            qint64 entries = 0;
            QCOMPARE(history.count({}, 1000, entries), HistoryFile::Result::Ok);
            QVERIFY(entries >= said.size());
        }
    }

    void leftoversOfAKilledProgramGo()
    {
        for (const char* hidden : {".O1.nc.99-1.new", ".O1.nc.99-2.new", ".O2.nc.99-1.new"})
            write(path(hidden), "half");
        for (const char* hidden : {".O1.nc.99-1.new", ".O2.nc.99-1.new"}) {
            QFile file(path(hidden));
            QVERIFY(file.open(QIODevice::ReadWrite));
            file.setFileTime(QDateTime::currentDateTime().addDays(-2), QFileDevice::FileModificationTime);
        }
        save(folder(), "A");
        QCOMPARE(filesIn(folder()), QStringList({".O1.nc.99-2.new", ".O2.nc.99-1.new", name}));
    }
};

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const auto arguments = QCoreApplication::arguments();
    if (arguments.size() == 2 && arguments[1].startsWith(u'/')) return saveForEver(arguments[1]);
    KeptFilesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "history_kept_files.moc"
