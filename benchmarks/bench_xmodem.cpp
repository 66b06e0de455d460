// SPDX-License-Identifier: GPL-3.0-or-later
// How near XModem comes to the limit that waiting for each block's answer leaves, beside lrzsz on the same line. A
// table, as Markdown.
#include "benchmarks/BenchView.h"
#include "benchmarks/PacedCable.h"
#include "protocol/XModemBlock.h"
#include "support/LrzszPeer.h"
#include "support/PtyPair.h"

#include <QApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

namespace
{
constexpr int mostBlocks = 250;
constexpr int limit = 600'000; // ms

QByteArray program(int baud)
{
    const int blocks = std::min(mostBlocks, baud * 8 / 10 / XModemBlock::size); // 8 s at most
    const QByteArray line = "N1000 G1 X-123.456 Y78.901 Z-2.5\n";
    return line.repeated(blocks * XModemBlock::dataSize / line.size());
}

// A block and its answer, in characters on the line. Without the last, EOT: lrzsz listens for a second before it
// believes it.
double share(const PacedCable::Carried& data, const PacedCable::Carried& answers, int baud)
{
    const auto blocks = data.characters / XModemBlock::size;
    const double time = std::chrono::duration<double>(answers.lastButOne - data.first).count();
    const double atLeast = 10.0 / baud * static_cast<double>(blocks) * (XModemBlock::size + 1);
    return 100 * atLeast / time;
}

template <typename Done> void runUntil(Done done, const char* what)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        if (timer.elapsed() > limit) qFatal("%s does not end", what);
    }
    QTest::qWait(200); // for the last answer on its way
}

std::shared_ptr<MachineRecord> settings(int baud)
{
    auto machine = std::make_shared<MachineRecord>();
    machine->MCBAUD = baud;
    machine->MCFLOW = 3; // XModem
    machine->MCTXEOB = QStringLiteral("LF");
    return machine;
}

double varnockSends(int baud)
{
    const PtyPair line;
    LrzszPeer control;
    BenchView machine(line.devicePath(), settings(baud));
    machine.editor->setProgram(program(baud));
    const PacedCable cable({line.master(), line.master()}, {control.end().out, control.end().in}, baud);
    machine.view.btnSend_Click();
    control.startReceiving();
    runUntil([&] { return !machine.view.dncRunning(); }, "sending");
    return share(cable.fromOne(), cable.fromOther(), baud);
}

double varnockReceives(int baud)
{
    const PtyPair line;
    LrzszPeer control;
    BenchView machine(line.devicePath(), settings(baud), false);
    const PacedCable cable({line.master(), line.master()}, {control.end().out, control.end().in}, baud);
    control.startSending(program(baud));
    runUntil([&] { return !control.isRunning(); }, "receiving");
    return share(cable.fromOther(), cable.fromOne(), baud);
}

double lrzszAlone(int baud)
{
    LrzszPeer sender, receiver;
    const PacedCable cable({sender.end().out, sender.end().in}, {receiver.end().out, receiver.end().in}, baud);
    receiver.startReceiving();
    sender.startSending(program(baud));
    runUntil([&] { return !sender.isRunning() && !receiver.isRunning(); }, "lrzsz");
    return share(cable.fromOne(), cable.fromOther(), baud);
}
} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    std::printf("\n| Baud | Varnock sends to lrzsz | lrzsz sends to Varnock | lrzsz to lrzsz |\n|---|---|---|---|\n");
    for (const int baud : {9600, 38400, 115200}) {
        std::printf("| %d |", baud);
        for (const auto& way : {varnockSends, varnockReceives, lrzszAlone}) {
            std::printf(" %.1f %% |", way(baud));
            std::fflush(stdout);
        }
        std::printf("\n");
    }
    return 0;
}
