// SPDX-License-Identifier: GPL-3.0-or-later
// Many machines at once and very large programs, in the real main window, as Markdown.
#include "benchmarks/BenchLine.h"
#include "benchmarks/PacedLine.h"
#include "config/g.h"
#include "config/SettingsText.h"
#include "editor/ProgramEditor.h"
#include "platform/Preferences.h"
#include "shell/AppDelegate.h"
#include "shell/viewChild.h"
#include "transfer/viewTX.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <unistd.h>
#include <vector>

namespace
{
using namespace std::chrono_literals;
constexpr int blockLength = 40; // characters on the wire

double megabytesInUse()
{
    std::ifstream statm("/proc/self/statm");
    double all = 0;
    double resident = 0;
    statm >> all >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1e6;
}

void storeMachines(const std::vector<std::unique_ptr<BenchLine>>& lines, FlowControl flow)
{
    std::vector<std::unique_ptr<MachineRecord>> records;
    std::vector<const MachineRecord*> machines;
    for (const auto& line : lines) {
        records.push_back(std::make_unique<MachineRecord>());
        records.back()->MCPORT = line->devicePath();
        records.back()->MCBAUD = 115200;
        records.back()->MCFLOW = static_cast<qint64>(flow);
        machines.push_back(records.back().get());
    }
    Preferences::setString(QStringLiteral("Varnock"), SettingsText::write(machines));
}

QString writeProgram(const QTemporaryDir& folder, int blocks)
{
    QString path = folder.filePath(QStringLiteral("%1.nc").arg(blocks));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) qFatal("cannot write the program");
    file.write(Bench::program(blocks, blockLength));
    return path;
}

/// The main window with one view per line.
class Shop
{
public:
    explicit Shop(int machines, viewChild::Mode mode = viewChild::SendMode, FlowControl flow = FlowControl::XonXoff)
    {
        for (int machine = 0; machine < machines; ++machine)
            lines.push_back(std::make_unique<BenchLine>(20ms));
        storeMachines(lines, flow);
        app.applicationDidFinishLaunching();
        app.window()->show();
        for (int machine = 1; machine <= machines; ++machine) {
            app.makeActiveIcon(machine);
            app.loadDockedChild(mode);
            if (auto* dialog = view(machine).findChild<QFileDialog*>()) dialog->reject();
        }
        QApplication::processEvents();
    }

    /// Processor time of the program alone, in seconds.
    double processorSeconds() const
    {
        double seconds = Bench::processorSeconds() - PacedLine::processorSeconds();
        for (const auto& line : lines)
            seconds -= line->processorSeconds();
        return seconds;
    }

    viewTX& view(int machine)
    {
        auto* found = childViewAt(machine)->findChild<viewTX*>();
        if (!found) qFatal("machine %d has no view: can its port be opened?", machine);
        return *found;
    }

    std::vector<std::unique_ptr<BenchLine>> lines;
    AppDelegate app;
};

// How long an operator's action waits for the event loop.
class ClickLatency
{
public:
    explicit ClickLatency(QObject& window)
        : thread_([this, &window] {
              while (!ended_) {
                  std::this_thread::sleep_for(std::chrono::milliseconds(7));
                  QElapsedTimer since;
                  since.start();
                  QMetaObject::invokeMethod(
                      &window, [this, since] { latencies.push_back(static_cast<double>(since.nsecsElapsed()) / 1e6); },
                      Qt::QueuedConnection);
              }
          })
    {
    }
    ~ClickLatency()
    {
        ended_ = true;
        thread_.join();
        QApplication::processEvents();
    }
    ClickLatency(const ClickLatency&) = delete;
    ClickLatency& operator=(const ClickLatency&) = delete;

    double worst() const { return latencies.empty() ? 0 : *std::max_element(latencies.begin(), latencies.end()); }

private:
    std::vector<double> latencies;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

void manyMachines(const QTemporaryDir& folder)
{
    constexpr double seconds = 5;
    std::printf("\n| Machines at 115200 baud | Window answers within | Share of each line used | Processor |\n"
                "|---|---|---|---|\n");
    const QString path = writeProgram(folder, 50'000);
    for (const int machines : {1, 8, 32}) {
        Shop shop(machines);
        for (int machine = 1; machine <= machines; ++machine) {
            shop.view(machine).openFile(path);
            shop.view(machine).btnSend_Click();
        }
        Bench::runFor(1);
        std::int64_t bytes = 0;
        for (const auto& line : shop.lines)
            bytes -= line->mark().bytes;
        const double workBefore = shop.processorSeconds();
        ClickLatency clicks(*shop.app.window());
        Bench::runFor(seconds);
        const double work = shop.processorSeconds() - workBefore;
        for (const auto& line : shop.lines)
            bytes += line->mark().bytes;
        std::printf("| %d | %.1f ms | %.1f %% | %.0f %% of a core |\n", machines, clicks.worst(),
                    100 * static_cast<double>(bytes) / machines / seconds / 11520, 100 * work / seconds);
        std::fflush(stdout);
        for (int machine = 1; machine <= machines; ++machine)
            shop.view(machine).btnStop_Click();
    }
}

void idleMachines()
{
    constexpr double seconds = 10;
    struct Waiting {
        const char* name;
        viewChild::Mode mode;
        FlowControl flow;
    };
    std::printf("\n| 32 machines on which nothing moves | Processor |\n|---|---|\n");
    for (const Waiting waiting : {Waiting{"send views", viewChild::SendMode, FlowControl::XonXoff},
                                  {"receive views, text", viewChild::ReceiveMode, FlowControl::XonXoff},
                                  {"receive views, XModem", viewChild::ReceiveMode, FlowControl::XModem}}) {
        const Shop shop(32, waiting.mode, waiting.flow);
        Bench::runFor(1);
        const double before = shop.processorSeconds();
        Bench::runFor(seconds);
        std::printf("| %s | %.1f %% of a core |\n", waiting.name, 100 * (shop.processorSeconds() - before) / seconds);
        std::fflush(stdout);
    }
}

void largePrograms(const QTemporaryDir& folder)
{
    std::printf("\n| Program | Opened in | Memory, in its sizes |\n|---|---|---|\n");
    for (const int blocks : {10'000, 1'000'000, 2'600'000}) {
        const QString path = writeProgram(folder, blocks);
        const double size = static_cast<double>(QFile(path).size()) / 1e6;
        Shop shop(1);
        const double before = megabytesInUse();
        QElapsedTimer timer;
        timer.start();
        shop.view(1).openFile(path);
        QApplication::processEvents();
        const double opened = static_cast<double>(timer.nsecsElapsed()) / 1e9;
        std::printf("| %d lines, %.0f MB | %.2f s | %.1f |\n", blocks, size, opened,
                    (megabytesInUse() - before) / size);
        std::fflush(stdout);
    }
}
} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    qputenv("XDG_DATA_HOME", folder.path().toLocal8Bit()); // the history's
    PacedLine::passOnEvery(5ms);
    if (argc < 2) {
        manyMachines(folder);
        idleMachines();
    }
    largePrograms(folder);
    return 0;
}
