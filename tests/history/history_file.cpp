// SPDX-License-Identifier: GPL-3.0-or-later
// What is written is there again, whole, also after the program was killed; and the filter finds it.
#include "history/HistoryFile.h"
#include "support/Required.h"
#include "tests/history/Entries.h"

#include <QCoreApplication>
#include <QProcess>
#include <QSqlError>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <limits>
#include <unistd.h>

using Result = HistoryFile::Result;
using Outcome = TransferEntry::Outcome;

namespace
{
constexpr qint64 fromTheEnd = std::numeric_limits<qint64>::max();
constexpr int many = 10'000;

QList<TransferEntry> readAll(HistoryFile& file, const HistoryFilter& filter = {})
{
    QList<TransferEntry> entries;
    if (file.read(filter, fromTheEnd, many, entries) != Result::Ok)
        qFatal("not read: %s", qPrintable(file.errorText()));
    return entries;
}

QStringList programs(const QList<TransferEntry>& entries)
{
    QStringList names;
    for (const auto& entry : entries)
        names << entry.program;
    return names;
}

// As another version of the program left it.
bool change(const QString& path, const QStringList& statements)
{
    const QString connection = QStringLiteral("another version");
    bool isDone = false;
    {
        auto db = QSqlDatabase::addDatabase("QSQLITE", connection);
        db.setDatabaseName(path);
        isDone = db.open() && std::all_of(statements.begin(), statements.end(),
                                          [&](const QString& statement) { return QSqlQuery(db).exec(statement); });
    }
    QSqlDatabase::removeDatabase(connection);
    return isDone;
}

// Writes entries until it is killed, and says after each that it is there.
int writeForEver(const QString& path)
{
    HistoryFile file(path);
    if (file.open() != Result::Ok) return 1;
    for (int number = 0;; ++number) {
        const bool isWritten = file.add({Entries::make(number, 1000 + number)}) == Result::Ok;
        if (!isWritten || ::write(STDOUT_FILENO, ".", 1) != 1) return 1;
    }
}
} // namespace

class FileTest : public QObject
{
    Q_OBJECT
    QTemporaryDir folder_;
    QString path() const { return folder_.filePath("history.sqlite"); }

    QStringList programsWithFrequentText(const HistoryFilter& filter) const;

private Q_SLOTS:
    void init() { folder_ = QTemporaryDir(); }
    void givesBackWhatItWasGiven();
    void keepsEntriesThatBeginAtOnce();
    void isReadInPieces();
    void isNotSharedWithAnotherProgram();
    void refusesAFileOfANewerVersion();
    void takesOverAFileOfTheFirstVersion();
    void filters_data();
    void filters();
    void survivesBeingKilled_data();
    void survivesBeingKilled();
};

void FileTest::givesBackWhatItWasGiven()
{
    QList<TransferEntry> given;
    {
        HistoryFile file(path());
        QCOMPARE(file.open(), Result::Ok);
        for (int number = 0; number < 6; ++number)
            given.prepend(Entries::make(number, 1000 + number));
        given.prepend(TransferEntry());
        given.first().began = 2000; // no program, no path, no sum: a send of what was typed
        QCOMPARE(file.add({given.rbegin(), given.rend()}), Result::Ok);
    }
    HistoryFile file(path());
    QCOMPARE(file.open(), Result::Ok);
    auto read = readAll(file);
    for (auto& entry : read)
        entry.key = 0;
    QCOMPARE(read, given);
    QStringList machines;
    QCOMPARE(file.machines(machines), Result::Ok);
    QCOMPARE(machines, QStringList({"", "Mill 0", "Mill 1", "Mill 2", "Mill 3", "Mill 4", "Mill 5"}));
}

void FileTest::keepsEntriesThatBeginAtOnce()
{
    HistoryFile file(path());
    QCOMPARE(file.open(), Result::Ok);
    for (int number = 0; number < 3; ++number)
        QCOMPARE(file.add({Entries::make(number, 1000)}), Result::Ok);
    QCOMPARE(programs(readAll(file)), QStringList({"O2.nc", "O1.nc", "O0.nc"}));
}

void FileTest::isReadInPieces()
{
    HistoryFile file(path());
    QCOMPARE(file.open(), Result::Ok);
    QStringList given;
    for (int number = 0; number < 10; ++number) {
        QCOMPARE(file.add({Entries::make(number, 1000 + number / 3)}), Result::Ok); // some begin at once
        given.prepend(QStringLiteral("O%1.nc").arg(number));
    }
    QList<TransferEntry> read;
    for (qsizetype before = -1; read.size() != before;) {
        before = read.size();
        QCOMPARE(file.read({}, read.isEmpty() ? fromTheEnd : read.last().key, 4, read), Result::Ok);
    }
    QCOMPARE(programs(read), given);
}

void FileTest::isNotSharedWithAnotherProgram()
{
    HistoryFile file(path());
    QCOMPARE(file.open(), Result::Ok);
    HistoryFile another(path());
    QCOMPARE(another.open(), Result::Failed);
    QCOMPARE(another.errorText(), "Another program is using it.");
    file.close();
    QCOMPARE(another.open(), Result::Ok);
}

void FileTest::refusesAFileOfANewerVersion()
{
    QCOMPARE(HistoryFile(path()).open(), Result::Ok);
    QVERIFY(change(path(), {"PRAGMA user_version = 3"}));
    QCOMPARE(HistoryFile(path()).open(), Result::Failed);
}

void FileTest::takesOverAFileOfTheFirstVersion()
{
    auto entry = Entries::make(3, Entries::at(QDate(2026, 11, 25)));
    QVERIFY(entry.isRestart);
    {
        HistoryFile file(path());
        QCOMPARE(file.open(), Result::Ok);
        QCOMPARE(file.add({entry}), Result::Ok);
    }
    QVERIFY(change(path(), {"ALTER TABLE entry DROP COLUMN restarted", "PRAGMA user_version = 1"}));
    HistoryFile file(path());
    QCOMPARE(file.open(), Result::Ok);
    const auto entries = readAll(file);
    QCOMPARE(entries.size(), 1);
    entry.key = entries[0].key;
    entry.isRestart = false; // not known then
    QCOMPARE(entries[0], entry);
}

void FileTest::filters_data()
{
    QTest::addColumn<HistoryFilter>("filter");
    QTest::addColumn<QStringList>("found");
    const QDate monday(2026, 11, 23);
    const QStringList all = {"O6.nc", "O5.nc", "O4.nc", "O3.nc", "O2.nc", "100%.nc", "typed"};
    const auto add = [](const char* name, const HistoryFilter& filter, const QStringList& found) {
        QTest::newRow(name) << filter << found;
    };
    add("everything", {}, all);
    add("a machine", {"Mill 4", {}, {}, {}, {}}, {"O4.nc"});
    add("a machine that has none", {"Mill", {}, {}, {}, {}}, {});
    add("an outcome", {{}, {}, {}, {}, Outcome::Stopped}, {"O6.nc", "100%.nc"});
    add("machine and outcome", {"Mill 6", {}, {}, {}, Outcome::Stopped}, {"O6.nc"});
    add("a part of the name", {{}, "o3", {}, {}, {}}, {"O3.nc"});
    add("a part of the folder", {{}, "/srv/Pr\u00fcfung", {}, {}, {}}, all.mid(0, 5));
    add("a program without a file", {{}, "Type", {}, {}, {}}, {"typed"});
    add("a percent sign as such", {{}, "%.", {}, {}, {}}, {"100%.nc"});
    add("an underline as such", {{}, "_", {}, {}, {}}, {});
    add("a quote", {{}, "'", {}, {}, {}}, {});
    add("program, machine and outcome", {"Mill 3", "O", {}, {}, Outcome::Unconfirmed}, {"O3.nc"});
    add("program and another machine", {"Mill 2", "O3", {}, {}, {}}, {});
    add("from a day", {{}, {}, monday.addDays(5), {}, {}}, {"O6.nc", "O5.nc"});
    add("up to a day", {{}, {}, {}, monday.addDays(1), {}}, {"100%.nc", "typed"});
    add("one day", {{}, {}, monday.addDays(3), monday.addDays(3), {}}, {"O3.nc"});
    add("one day and a program", {{}, "nc", monday.addDays(3), monday.addDays(3), {}}, {"O3.nc"});
    add("days the wrong way round", {{}, {}, monday.addDays(3), monday.addDays(2), {}}, {});
}

QStringList FileTest::programsWithFrequentText(const HistoryFilter& filter) const
{
    QStringList names;
    {
        auto database = QSqlDatabase::addDatabase("QSQLITE", "direct");
        database.setDatabaseName(path());
        require(database.open(), "the file does not open");
        const auto page = HistoryQuery::page(filter, HistoryQuery::Text::Frequent, fromTheEnd, many);
        QSqlQuery query(database);
        query.prepare(page.text);
        for (const auto& value : page.values)
            query.addBindValue(value);
        require(query.exec(), query.lastError().text());
        while (query.next())
            names << query.value(4).toString();
    }
    QSqlDatabase::removeDatabase("direct");
    return names;
}

void FileTest::filters()
{
    QFETCH(HistoryFilter, filter);
    HistoryFile file(path());
    QCOMPARE(file.open(), Result::Ok);
    const QDate monday(2026, 11, 23);
    for (int number = 0; number < 7; ++number) {
        const int hours[] = {0, 23, 12};
        auto entry = Entries::make(number, Entries::at(monday.addDays(number), hours[number % 3]));
        if (number == 0) entry.program = "typed";
        if (number == 1) entry.program = "100%.nc";
        if (number < 2) entry.path = number == 0 ? QString() : "/srv/100%.nc";
        QCOMPARE(file.add({entry}), Result::Ok);
    }
    QFETCH(QStringList, found);
    QCOMPARE(programs(readAll(file, filter)), found);
    qint64 number = 0;
    QCOMPARE(file.count(filter, 100, number), Result::Ok);
    QCOMPARE(number, found.size());
    file.close();
    QCOMPARE(programsWithFrequentText(filter), found); // a text that many transfers match is looked for in another way
}

void FileTest::survivesBeingKilled_data()
{
    QTest::addColumn<int>("entries");
    for (const int entries : {0, 1, 2, 3, 5, 8, 13, 21, 34, 55, 89, 144, 233})
        QTest::addRow("after %d entries", entries) << entries;
}

// Each time the next entry is being written, somewhere between its first byte and its last.
void FileTest::survivesBeingKilled()
{
    QFETCH(int, entries);
    QProcess writer;
    writer.start(QCoreApplication::applicationFilePath(), {"write", path()});
    qsizetype told = 0;
    while (told < entries + 1) {
        QVERIFY(writer.waitForReadyRead());
        told += writer.readAllStandardOutput().size();
    }
    writer.kill();
    QVERIFY(writer.waitForFinished());
    told += writer.readAllStandardOutput().size();

    HistoryFile file(path());
    QCOMPARE(file.open(), Result::Ok);
    auto read = readAll(file);
    QVERIFY2(read.size() == told || read.size() == told + 1, "an entry that was told is missing");
    for (auto number = static_cast<int>(read.size()); auto& entry : read) {
        --number;
        entry.key = 0;
        QCOMPARE(entry, Entries::make(number, 1000 + number));
    }
    QCOMPARE(file.add({Entries::make(7, 9000)}), Result::Ok);
    QCOMPARE(readAll(file).size(), read.size() + 1);
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && QByteArray(argv[1]) == "write") return writeForEver(QString::fromLocal8Bit(argv[2]));
    FileTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "history_file.moc"
