// SPDX-License-Identifier: GPL-3.0-or-later
// The history with a million transfers, in its real window, as Markdown.
#include "history/History.h"
#include "history/HistoryFile.h"
#include "history/HistoryPage.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QTableView>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace
{
constexpr int entries = 1'000'000; // two years of 20 machines with a transfer every 20 minutes
constexpr int written = 20'000;    // one by one; the rest are copies of them at other times
constexpr int machines = 20;
constexpr qint64 spacing = 60'000; // ms
constexpr int repeats = 5;
using Outcome = TransferEntry::Outcome;

TransferEntry entry(int number, qint64 newest)
{
    TransferEntry entry;
    entry.began = newest - number * spacing;
    entry.ended = entry.began + 45'000;
    entry.machine = QStringLiteral("Machine %1").arg(number % machines + 1);
    entry.program = QStringLiteral("O%1.nc").arg(number, 5, 10, QLatin1Char('0'));
    entry.path = QStringLiteral("/srv/programs/customer %1/%2").arg(number % 300).arg(entry.program);
    entry.bytes = 40'000 + number;
    entry.sha256 = QByteArray(32, static_cast<char>(number));
    entry.count = 1'000 + number % 1'000;
    entry.outcome = number % 1'000 == 0 ? Outcome::PortLost : number % 20 == 0 ? Outcome::Stopped : Outcome::Finished;
    return entry;
}

void copyToOtherTimes(const QString& path)
{
    {
        auto database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("copy"));
        database.setDatabaseName(path);
        if (!database.open()) qFatal("the history does not open");
        QSqlQuery query(database);
        const auto run = [&query](const QString& sql) {
            if (!query.exec(sql)) qFatal("%s", qPrintable(query.lastError().text()));
        };
        run(QStringLiteral("CREATE TEMP TABLE copy AS SELECT * FROM entry"));
        run(QStringLiteral("BEGIN"));
        for (int copies = 1; copies < entries / written; ++copies) {
            run(QStringLiteral("UPDATE copy SET key = key - %1").arg(written * spacing * 1000));
            run(QStringLiteral("INSERT INTO entry SELECT * FROM copy"));
        }
        run(QStringLiteral("COMMIT"));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("copy"));
}

// Returns how long one entry takes, on the disk and all, in ms.
double fill(const QString& path)
{
    HistoryFile file(path);
    if (file.open() != HistoryFile::Result::Ok) qFatal("no history: %s", qPrintable(file.errorText()));
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    std::deque<TransferEntry> many;
    for (int number = 100; number < written; ++number)
        many.push_back(entry(number, now));
    file.add(many);
    QElapsedTimer timer;
    timer.start();
    for (int number = 0; number < 100; ++number)
        file.add({entry(number, now)});
    const double each = static_cast<double>(timer.nsecsElapsed()) / 1e6 / 100;
    file.close();
    copyToOtherTimes(path);
    return each;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// ms until the rows are there.
double filtered(HistoryModel& model, const HistoryFilter& filter)
{
    std::vector<double> times;
    for (int repeat = 0; repeat < repeats; ++repeat) {
        QEventLoop loop;
        QObject::connect(&model, &QAbstractItemModel::modelReset, &loop, &QEventLoop::quit);
        QElapsedTimer timer;
        timer.start();
        model.setFilter(filter);
        loop.exec();
        times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    return median(times);
}

// ms from the click until the window shows its rows; the first time with the history not yet in memory.
double opened(History& history)
{
    QElapsedTimer timer;
    timer.start();
    HistoryPage page(history);
    page.showMachine({});
    const auto* table = page.findChild<QTableView*>(QStringLiteral("tblHistory"));
    while (table->model()->rowCount() == 0 || !table->isVisible())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    page.repaint();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}
} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString path = QDir(folder.path()).filePath(QStringLiteral("history.sqlite"));
    const double each = fill(path);
    std::printf("\n| 1,000,000 transfers, %.0f MB | Takes |\n|---|---|\n",
                static_cast<double>(QFileInfo(path).size()) / 1e6);
    const auto print = [](const char* what, double ms) { std::printf("| %s | %.1f ms |\n", what, ms); };
    print("Writing one, in the background", each);
    History history(folder.path());
    print("Opening the page, the first time", opened(history));
    print("Opening it again", opened(history));
    HistoryModel model(history);
    const QDate today = QDate::currentDate();
    print("A machine", filtered(model, {QStringLiteral("Machine 7"), {}, {}, {}, {}}));
    print("An outcome of 1 in 1,000", filtered(model, {{}, {}, {}, {}, Outcome::PortLost}));
    print("A machine and an outcome that it never had",
          filtered(model, {QStringLiteral("Machine 7"), {}, {}, {}, Outcome::PortLost}));
    print("A month, a year ago", filtered(model, {{}, {}, today.addDays(-395), today.addDays(-365), {}}));
    print("A text that every program has", filtered(model, {{}, QStringLiteral("nc"), {}, {}, {}}));
    print("A text that one program in 300 has", filtered(model, {{}, QStringLiteral("customer 77/"), {}, {}, {}}));
    print("A program", filtered(model, {{}, QStringLiteral("O01234"), {}, {}, {}}));
    print("A text that no program has", filtered(model, {{}, QStringLiteral("turbine"), {}, {}, {}}));
    print("A text, a machine and an outcome",
          filtered(model, {QStringLiteral("Machine 1"), QStringLiteral("customer"), {}, {}, Outcome::Stopped}));
    return 0;
}
