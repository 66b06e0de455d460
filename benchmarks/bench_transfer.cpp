// SPDX-License-Identifier: GPL-3.0-or-later
// What large programs and many machines cost. Prints a table; run it from a release build. Arguments choose
// parts: open, line, search, compare, send, receive, settings.
#include "benchmarks/BenchStation.h"
#include "config/g.h"
#include "config/NotificationNames.h"
#include "editor/CompareWindow.h"
#include "editor/ProgramEditor.h"
#include "editor/ProgramSearch.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <vector>

namespace
{
QByteArray program(int lines)
{
    QByteArray text;
    text.reserve(40LL * lines);
    for (int line = 0; line < lines; ++line)
        text += QByteArray("N" + QByteArray::number(line % 10'000'000) + " G1 X-123.456 Y78.901 Z-2.5 F1200")
                    .leftJustified(39, ' ') +
                '\n';
    return text;
}

double milliseconds(const QElapsedTimer& timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

struct ShownEditor : ProgramEditor {
    ShownEditor()
    {
        resize(900, 600);
        show();
        QApplication::processEvents();
    }
};

void benchOpening(int lines)
{
    const QByteArray text = program(lines);
    ShownEditor editor;
    QElapsedTimer timer;
    timer.start();
    const auto cpu = std::clock(); // other programs' load shows only in the other figures
    editor.setProgram(text);
    const double filled = milliseconds(timer);
    QApplication::processEvents();
    std::printf("open  %9d lines %6.1f MB   fill %8.1f ms   fill and paint %8.1f ms, of the processor %8.1f ms\n",
                lines, static_cast<double>(text.size()) / 1e6, filled, milliseconds(timer),
                static_cast<double>(std::clock() - cpu) * 1000.0 / CLOCKS_PER_SEC);
}

// A file without line ends is one line of the editor: laying it out must not stall the window.
void benchOneLine(int megabytes)
{
    const QByteArray text = QByteArray("G1 X-123.456 Y78.901 Z-2.5 F1200 (A) ").repeated(megabytes * 27'000LL);
    ShownEditor editor;
    QElapsedTimer timer;
    timer.start();
    editor.setProgram(text);
    QApplication::processEvents();
    const double opened = milliseconds(timer);
    timer.restart();
    editor.markLineOut(editor.lineAt(0));
    QApplication::processEvents();
    std::printf("open  one line of %4.1f MB   fill and paint %8.1f ms   mark and paint %8.1f ms\n",
                static_cast<double>(text.size()) / 1e6, opened, milliseconds(timer));
}

void benchSendingOneLine(int megabytes)
{
    BenchStation station(QByteArray(megabytes * 1'000'000LL, 'X'));
    QElapsedTimer timer;
    timer.start();
    station.view.btnSend_Click();
    qint64 longest = 0;                                           // ns in which the window did not respond
    while (station.view.dncRunning() && timer.elapsed() < 3000) { // the line would take an hour for the whole
        QElapsedTimer turn;
        turn.start();
        QApplication::processEvents();
        longest = std::max(longest, turn.nsecsElapsed());
    }
    std::printf("send  one line of %4d MB   longest without an answer %8.1f ms\n", megabytes,
                static_cast<double>(longest) / 1e6);
    station.view.btnStop_Click();
}

// Every thousandth line is another one.
void benchComparing(int lines)
{
    QByteArray other = program(lines);
    for (qsizetype at = 0; at < other.size(); at += 40'000)
        other[at] = 'M';
    ProgramEditor editor;
    editor.setProgram(program(lines));
    QElapsedTimer timer, turn;
    timer.start();
    auto* window = new CompareWindow(editor, QStringLiteral("A"), other, QStringLiteral("B"), nullptr);
    window->show();
    QApplication::processEvents();
    const double opened = milliseconds(timer);
    const auto* count = window->findChild<QLabel*>("lblDifferences");
    qint64 longest = 0; // ns without an answer
    while (count->text().endsWith(u'.')) {
        turn.restart();
        QApplication::processEvents(QEventLoop::AllEvents, 1);
        longest = std::max(longest, turn.nsecsElapsed());
    }
    const double compared = milliseconds(timer);
    turn.restart();
    for (int step = 0; step < 100; ++step) {
        window->findChild<QPushButton*>("btnNextDifference")->click();
        QApplication::processEvents();
    }
    std::printf("compare %7d lines   %s   open %8.1f ms   in %8.1f ms   longest without an answer %8.1f ms   "
                "to the next %6.1f ms\n",
                lines, qPrintable(count->text()), opened, compared, static_cast<double>(longest) / 1e6,
                milliseconds(turn) / 100);
    delete window;
}

// Looks for what is not there, which takes longest.
void benchSearching(int lines)
{
    ProgramEditor editor;
    editor.setProgram(program(lines));
    ProgramSearch search(&editor);
    for (const QString& pattern : {QStringLiteral("?"), QStringLiteral("N77777777")}) {
        bool ended = false;
        QObject::connect(&search, &ProgramSearch::notFound, &search, [&ended] { ended = true; });
        qint64 longest = 0; // ns
        QElapsedTimer timer;
        QElapsedTimer turn;
        timer.start();
        turn.start();
        search.start(pattern, SearchDirection::Forward, 0);
        longest = turn.nsecsElapsed();
        while (!ended) {
            turn.restart();
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
            longest = std::max(longest, turn.nsecsElapsed());
        }
        search.disconnect();
        std::printf("find  %9d lines of program   %-10s whole %8.1f ms   longest slice %8.1f ms\n", lines,
                    qPrintable(pattern), milliseconds(timer), static_cast<double>(longest) / 1e6);
    }
}

struct LineCost {
    double whole = 0;    // ms from line to line
    double work = 0;     // ms of the processor, the control's included
    double sendLine = 0; // ms without the event loop, the write and the paint
};

// Sends from the middle of the program, where a cost that grows with the position would show; a short one repeatedly.
LineCost costOfLine(int lines)
{
    constexpr int sent = 1000; // the line takes its time
    constexpr int calls = 300;
    BenchStation station(program(lines));
    g::mcIcons[1]->MCREPEAT = true;
    viewTX& view = station.view;
    int completions = 0;
    QObject observer;
    view.nc->addObserver(&observer, QStringLiteral("TxOnComm"), &station.port,
                         [&completions](const Notification&) { ++completions; });
    const auto sendFromTheMiddle = [&] {
        station.editor->moveCaretTo(station.editor->textSize() / 2);
        view.findChild<QWidget*>(QStringLiteral("cbo1"))->setProperty("currentIndex", 1);
        view.btnSend_Click();
    };
    QElapsedTimer timer;
    timer.start();
    const auto cpu = std::clock();
    sendFromTheMiddle();
    while (completions < sent && view.dncRunning())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    LineCost cost;
    cost.whole = milliseconds(timer) / sent;
    cost.work = static_cast<double>(std::clock() - cpu) * 1000.0 / CLOCKS_PER_SEC / sent;
    view.btnStop_Click();

    sendFromTheMiddle();
    view.nc->removeObserver(&view, Notifications::TxOnComm); // the view sends no line by itself
    for (int line = 0; line < calls; ++line) {
        const int before = completions;
        timer.restart();
        view.sendLine();
        cost.sendLine += milliseconds(timer) / calls;
        while (completions == before)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return cost;
}

// Medians of several rounds: handing a line over between two threads takes a different time in each run.
void benchSending()
{
    constexpr int rounds = 3;
    constexpr std::array sizes{1000, 100'000, 1'000'000, 2'500'000};
    std::array<std::vector<LineCost>, sizes.size()> costs;
    for (int round = 0; round < rounds; ++round)
        for (std::size_t size = 0; size < sizes.size(); ++size)
            costs[size].push_back(costOfLine(sizes[size]));
    const auto median = [&](std::size_t size, double LineCost::*part) {
        std::sort(costs[size].begin(), costs[size].end(),
                  [part](const LineCost& a, const LineCost& b) { return a.*part < b.*part; });
        return costs[size][rounds / 2].*part;
    };
    for (std::size_t size = 0; size < sizes.size(); ++size) {
        std::printf("send  %9d lines of program   %6.3f ms a line at 115200 baud (%.2f of the first), of the processor "
                    "%6.3f ms (%.2f)   sendLine alone %6.3f ms\n",
                    sizes[size], median(size, &LineCost::whole),
                    median(size, &LineCost::whole) / median(0, &LineCost::whole), median(size, &LineCost::work),
                    median(size, &LineCost::work) / median(0, &LineCost::work), median(size, &LineCost::sendLine));
    }
}

// How long the window freezes while a control punches as fast as the line takes it, many times 115200 baud.
void benchReceiving(int lines)
{
    const QByteArray text = program(lines);
    BenchStation station({}, false);
    QElapsedTimer beat; // stands for the operator's clicks and keys
    qint64 longestGap = 0;
    QTimer heart;
    QObject::connect(&heart, &QTimer::timeout, [&] { longestGap = std::max(longestGap, beat.restart()); });
    QElapsedTimer timer;
    timer.start();
    beat.start();
    heart.start(1);
    station.control.punch(text);
    while (station.editor->textSize() < text.size() && timer.elapsed() < 600'000)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const double whole = milliseconds(timer);
    std::printf("receive %7d lines %6.1f MB   %8.1f ms   %6.2f MB/s   longest gap %5lld ms   %s\n", lines,
                static_cast<double>(text.size()) / 1e6, whole, static_cast<double>(text.size()) / 1e3 / whole,
                static_cast<long long>(longestGap),
                station.editor->wholeText() == text ? "same bytes" : "BYTES DIFFER");
}

void benchSettings(int machines)
{
    constexpr int rounds = 20;
    for (int machine = 0; machine <= machines; ++machine)
        g::mcIcons.append(std::make_shared<MachineRecord>());
    QElapsedTimer timer;
    timer.start();
    for (int round = 0; round < rounds; ++round)
        g::saveAllMcSettings();
    const double save = milliseconds(timer) / rounds;
    timer.restart();
    for (int round = 0; round < rounds; ++round) {
        g::mcIcons.clear();
        g::mcChildViews.clear();
        g::readAllMcSettings();
    }
    std::printf("settings of %d machines   save %8.2f ms   read %8.2f ms\n", machines, save,
                milliseconds(timer) / rounds);
}
} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    const QStringList wanted = QApplication::arguments().mid(1);
    const auto each = [&](const char* name, std::initializer_list<int> sizes, void (*bench)(int)) {
        if (!wanted.isEmpty() && !wanted.contains(QLatin1String(name))) return;
        for (const int size : sizes)
            bench(size);
    };
    each("open", {1000, 1'000'000}, benchOpening);
    each("line", {1, 40}, benchOneLine);
    each("line", {1, 40}, benchSendingOneLine);
    each("search", {1000, 1'000'000}, benchSearching);
    each("compare", {1000, 1'000'000}, benchComparing);
    each("send", {0}, [](int) { benchSending(); });
    each("receive", {10'000, 1'000'000}, benchReceiving);
    each("settings", {50}, benchSettings);
    return 0;
}
