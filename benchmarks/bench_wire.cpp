// SPDX-License-Identifier: GPL-3.0-or-later
// How much of a line's physical limit a text send uses, what it costs, and what still goes out after an XOFF: tables on
// paced lines, as Markdown.
#include "benchmarks/BenchMachine.h"
#include "benchmarks/PacedLine.h"

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <random>

namespace
{
constexpr int bitsPerCharacter = 10; // start bit, 8 data bits, one stop bit
constexpr int rates[] = {4800, 9600, 38400, 115200};

struct Use {
    double share = 0;     // of the line's limit
    double processor = 0; // of one core
};

Use measure(int baud, int characters)
{
    const double limit = static_cast<double>(baud) / bitsPerCharacter;
    const double seconds = std::max(3.0, 4000 / limit);
    BenchMachine machine(baud, 1);
    machine.setProgram(Bench::program(static_cast<int>(limit * (seconds + 2)) / characters, characters));
    machine.view.btnSend_Click();
    Bench::runFor(0.5);
    const auto work = [&machine] {
        return Bench::processorSeconds() - PacedLine::processorSeconds() - machine.line.processorSeconds();
    };
    const double workBefore = work();
    const auto from = machine.line.mark();
    Bench::runFor(seconds);
    const auto to = machine.line.mark();
    const double workDone = work() - workBefore;
    const double time = std::chrono::duration<double>(to.time - from.time).count();
    return {static_cast<double>(to.bytes - from.bytes) / time / limit, workDone / seconds};
}

void tableOfUse()
{
    constexpr int lengths[] = {10, 20, 40, 80};
    std::printf("\n| Baud |");
    for (const int length : lengths)
        std::printf(" %d characters a block |", length);
    std::printf(" Processor, 20 characters |\n|---|---|---|---|---|---|\n");
    for (const int baud : rates) {
        std::printf("| %d |", baud);
        double processor = 0;
        for (const int length : lengths) {
            const auto use = measure(baud, length);
            if (length == 20) processor = use.processor;
            std::printf(" %.1f %% |", 100 * use.share);
            std::fflush(stdout);
        }
        std::printf(" %.1f %% of a core |\n", 100 * processor);
    }
}

void tableOfXoff()
{
    constexpr int trials = 12;
    std::printf("\n| Baud | Format | Bytes after XOFF: mean | most |\n|---|---|---|---|\n");
    std::minstd_rand random(1);
    std::uniform_real_distribution<double> pause(0.2, 0.3);
    for (const int baud : rates) {
        for (const bool evenParity : {false, true}) {
            BenchMachine machine(baud, 1, evenParity);
            machine.setProgram(Bench::program(200'000, 20));
            machine.view.btnSend_Click();
            double sum = 0;
            double most = 0;
            for (int trial = 0; trial < trials; ++trial) {
                Bench::runFor(pause(random));
                machine.line.write(evenParity ? '\x93' : '\x13');
                const auto before = machine.line.mark().bytes;
                Bench::runFor(0.2);
                const auto after = static_cast<double>(machine.line.mark().bytes - before);
                sum += after;
                most = std::max(most, after);
                machine.line.write('\x11');
            }
            std::printf("| %d | %s | %.1f | %.0f |\n", baud, evenParity ? "7 bits, even parity" : "8 bits",
                        sum / trials, most);
            std::fflush(stdout);
        }
    }
}
} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    tableOfUse();
    tableOfXoff();
    return 0;
}
