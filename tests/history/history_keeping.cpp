// SPDX-License-Identifier: GPL-3.0-or-later
// The history goes on whatever becomes of its file, says so once, and never keeps anybody waiting.
#include "config/NotificationNames.h"
#include "history/History.h"
#include "history/HistoryKeeper.h"
#include "platform/NotificationCenter.h"
#include "tests/history/Entries.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <limits>
#include <sys/resource.h>

namespace
{
constexpr qint64 fromTheEnd = std::numeric_limits<qint64>::max();
constexpr qint64 day = 24LL * 60 * 60 * 1000;

QStringList programs(const QList<TransferEntry>& entries)
{
    QStringList names;
    for (const auto& entry : entries)
        names << entry.program;
    return names;
}

// A full disk: no file of this process may grow beyond that.
void limitFiles(rlim_t bytes)
{
    rlimit limit;
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes;
    ::setrlimit(RLIMIT_FSIZE, &limit);
}
} // namespace

class KeepingTest : public QObject
{
    Q_OBJECT
    QTemporaryDir folder_;
    QStringList told_;

    QString path() const { return folder_.filePath("data/history.sqlite"); }
    std::unique_ptr<HistoryKeeper> keeper()
    {
        return std::make_unique<HistoryKeeper>(path(), [this](const QString& text) { told_ << text; });
    }
    QStringList files() const { return QDir(folder_.filePath("data")).entryList(QDir::Files, QDir::Name); }
    // A history of some size, closed.
    void writeHistory(int entries)
    {
        std::deque<TransferEntry> all;
        for (int number = 0; number < entries; ++number)
            all.push_back(Entries::make(number, 1000 + number));
        write(all);
    }
    void write(const std::deque<TransferEntry>& entries)
    {
        HistoryFile file(path());
        if (file.open() != HistoryFile::Result::Ok || file.add(entries) != HistoryFile::Result::Ok)
            qFatal("no history: %s", qPrintable(file.errorText()));
    }

private Q_SLOTS:
    void init()
    {
        folder_ = QTemporaryDir();
        told_.clear();
    }
    void beginsAnewWhenDamaged_data();
    void beginsAnewWhenDamaged();
    void setsAsideWhatIsDamagedWhileOpen();
    void tellsOnceThatItCannotWrite_data();
    void tellsOnceThatItCannotWrite();
    void writesLaterWhatAFullDiskRefused();
    void deletesWhatIsOld_data();
    void deletesWhatIsOld();
    void tellsWhenAllThatIsOldIsDeleted();
    void notesWhatViewsReport();
    void keepsWhatIsReportedAtTheEnd();
    void answersNobodyWhoIsGone();
    void exportsWhatMatches();
    void tellsWhyAnExportFails();
};

void KeepingTest::beginsAnewWhenDamaged_data()
{
    QTest::addColumn<qint64>("from");
    QTest::addColumn<qint64>("to"); // overwritten; beyond the end nothing is
    QTest::addColumn<qint64>("size");
    QTest::newRow("all of it") << 0LL << 100'000LL << 0LL;
    QTest::newRow("the head") << 0LL << 100LL << 0LL;
    QTest::newRow("the list of tables") << 100LL << 4096LL << 0LL;
    QTest::newRow("everything but the first page") << 4096LL << 10'000'000LL << 0LL;
    QTest::newRow("cut short") << 0LL << 0LL << 8192LL;
}

void KeepingTest::beginsAnewWhenDamaged()
{
    QFETCH(qint64, from);
    QFETCH(qint64, to);
    QFETCH(qint64, size);
    writeHistory(300);
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    if (size > 0) QVERIFY(file.resize(size));
    file.seek(from);
    const auto damage =
        QByteArray(static_cast<qsizetype>(std::min(to, file.size()) - std::min(from, file.size())), 'x');
    QCOMPARE(file.write(damage), damage.size());
    file.seek(0);
    const QByteArray damaged = file.readAll();
    file.close();

    const auto renewed = keeper();
    renewed->add(Entries::make(3, 5000));
    QCOMPARE(programs(renewed->read({}, fromTheEnd, 10)), QStringList("O3.nc"));
    QCOMPARE(told_.size(), 1);
    QString aside = files().value(0);
    QVERIFY2(aside.startsWith("history-damaged-"), qPrintable(aside));
    QVERIFY2(told_.first().contains(aside), qPrintable(told_.first()));
    QFile kept(folder_.filePath("data/" + aside));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), damaged);
}

void KeepingTest::setsAsideWhatIsDamagedWhileOpen()
{
    writeHistory(3000);
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.seek(file.size() / 2);
    file.write(QByteArray(static_cast<qsizetype>(file.size() / 3), 'x'));
    file.close();

    const auto reader = keeper();
    const auto read = reader->read({}, fromTheEnd, 10'000); // the newest are at the end and may be whole
    QCOMPARE(told_.size(), 1);
    QCOMPARE(read.size(), 0);
    reader->add(Entries::make(3, 5000));
    QCOMPARE(programs(reader->read({}, fromTheEnd, 10)), QStringList("O3.nc"));
    QCOMPARE(told_.size(), 1);
}

void KeepingTest::tellsOnceThatItCannotWrite_data()
{
    QTest::addColumn<bool>("isFolderAFile");
    QTest::newRow("no folder can be made") << true;
    QTest::newRow("a folder is in the file's place") << false;
}

void KeepingTest::tellsOnceThatItCannotWrite()
{
    QFETCH(bool, isFolderAFile);
    const QString obstacle = folder_.filePath("data");
    if (isFolderAFile) QVERIFY(QFile(obstacle).open(QIODevice::WriteOnly));
    if (!isFolderAFile) QVERIFY(QDir().mkpath(path()));
    const auto stubborn = keeper();
    for (int number = 0; number < 3; ++number)
        stubborn->add(Entries::make(number, 1000 + number));
    QCOMPARE(stubborn->read({}, fromTheEnd, 10).size(), 0);
    QCOMPARE(told_.size(), 1);

    QVERIFY(isFolderAFile ? QFile::remove(obstacle) : QDir().rmdir(path()));
    stubborn->add(Entries::make(3, 1003)); // the others have waited
    QCOMPARE(programs(stubborn->read({}, fromTheEnd, 10)), QStringList({"O3.nc", "O2.nc", "O1.nc", "O0.nc"}));
    QCOMPARE(told_.size(), 1);
}

void KeepingTest::writesLaterWhatAFullDiskRefused()
{
    const auto full = keeper();
    full->add(Entries::make(0, 1000));
    ::signal(SIGXFSZ, SIG_IGN);
    limitFiles(150'000);
    for (int number = 1; number < 100; ++number)
        full->add(Entries::make(number, 1000 + number));
    limitFiles(RLIM_INFINITY);
    QCOMPARE(told_.size(), 1);
    full->add(Entries::make(100, 1100));
    QCOMPARE(full->read({}, fromTheEnd, 1000).size(), 101);
    QCOMPARE(keeper()->read({}, fromTheEnd, 1000).size(), 0); // in use
}

void KeepingTest::deletesWhatIsOld_data()
{
    QTest::addColumn<int>("days");
    QTest::addColumn<QStringList>("kept");
    QTest::newRow("two years, unless set") << -1 << QStringList{"O0.nc", "O1.nc", "O2.nc"};
    QTest::newRow("a month") << 30 << QStringList{"O0.nc"};
    QTest::newRow("for ever") << 0 << QStringList{"O0.nc", "O1.nc", "O2.nc", "O3.nc"};
}

void KeepingTest::deletesWhatIsOld()
{
    QFETCH(int, days);
    QFETCH(QStringList, kept);
    const qint64 now = Entries::at(QDate(2026, 11, 25));
    std::deque<TransferEntry> entries;
    const qint64 ages[] = {1, 40, 729, 731};
    for (int number = 0; number < 4; ++number)
        entries.push_back(Entries::make(number, now - ages[number] * day));
    for (int number = 0; number < 5000 && days == 30; ++number)
        entries.push_back(Entries::make(1, now - 50 * day + number)); // more than one step deletes
    write(entries);
    const auto tidy = keeper();
    if (days >= 0) tidy->setKeptDays(days);
    QCOMPARE(tidy->countOlderThan(tidy->keptDays(), now, 10'000) > 0, kept.size() < 4);
    while (tidy->removeOld(now))
        continue;
    QCOMPARE(programs(tidy->read({}, fromTheEnd, 10)), kept);
    QCOMPARE(tidy->machines().size(), kept.size());
    QCOMPARE(tidy->read({{}, "O1", {}, {}, {}}, fromTheEnd, 10).size(), kept.contains("O1.nc") ? 1 : 0);
}

void KeepingTest::tellsWhenAllThatIsOldIsDeleted()
{
    std::deque<TransferEntry> entries;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (int number = 0; number < 5000; ++number)
        entries.push_back(Entries::make(1, now - 50 * day + number));
    entries.push_back(Entries::make(2, now));
    write(entries);
    History history(folder_.filePath("data"));
    QSignalSpy changed(&history, &History::changed);
    QTRY_COMPARE(changed.size(), 1); // what was old already
    history.setKeptDays(30);
    QTRY_COMPARE(changed.size(), 2);
    qint64 left = -1;
    history.count(this, {}, 10'000, [&](qint64 count) { left = count; });
    QTRY_COMPARE(left, 1);
}

void KeepingTest::notesWhatViewsReport()
{
    History history(folder_.filePath("data"));
    QSignalSpy changed(&history, &History::changed);
    NotificationCenter::defaultCenter().post(
        Notifications::transferRecorded_Event, this,
        {{Notifications::transferEntry, QVariant::fromValue(Entries::make(3, QDateTime::currentMSecsSinceEpoch()))}});
    QVERIFY(!changed.isEmpty());
    QStringList found;
    history.read(this, {}, fromTheEnd, 10, [&](const auto& entries) { found = programs(entries); });
    QTRY_COMPARE(found, QStringList("O3.nc"));
}

void KeepingTest::keepsWhatIsReportedAtTheEnd()
{
    constexpr int many = 50;
    {
        History history(folder_.filePath("data"));
        for (int number = 0; number < many; ++number)
            history.add(Entries::make(number, QDateTime::currentMSecsSinceEpoch() + number));
    }
    QCOMPARE(keeper()->count({}, 10'000), many);
}

void KeepingTest::answersNobodyWhoIsGone()
{
    auto history = std::make_unique<History>(folder_.filePath("data"));
    auto asker = std::make_unique<QObject>();
    bool isAnswered = false;
    history->count(asker.get(), {}, 10, [&](qint64) { qFatal("answered somebody who is gone"); });
    history->count(this, {}, 10, [&](qint64) { isAnswered = true; });
    asker.reset();
    history.reset();
    QTRY_VERIFY(isAnswered);
}

void KeepingTest::exportsWhatMatches()
{
    constexpr int many = 2500; // several pieces
    std::deque<TransferEntry> entries;
    for (int number = 0; number < many; ++number)
        entries.push_back(Entries::make(number % 2, QDateTime::currentMSecsSinceEpoch() + number));
    write(entries);
    History history(folder_.filePath("data"));
    const QString target = folder_.filePath("history.csv");
    std::optional<QString> error;
    history.exportTo(this, target, {"Mill 1", {}, {}, {}, {}}, [&](const QString& text) { error = text; });
    QTRY_VERIFY(error);
    QCOMPARE(*error, QString());
    QFile file(target);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const auto lines = file.readAll().split('\n');
    QCOMPARE(lines.size(), 1 + many / 2 + 1);
    for (const auto& line : lines.mid(1, many / 2))
        QVERIFY(line.contains(",Mill 1,"));
}

void KeepingTest::tellsWhyAnExportFails()
{
    History history(folder_.filePath("data"));
    std::optional<QString> error;
    history.exportTo(this, folder_.filePath("none/history.csv"), {}, [&](const QString& text) { error = text; });
    QTRY_VERIFY(error);
    QVERIFY(!error->isEmpty());
}

QTEST_GUILESS_MAIN(KeepingTest)
#include "history_keeping.moc"
