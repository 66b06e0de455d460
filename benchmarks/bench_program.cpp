// SPDX-License-Identifier: GPL-3.0-or-later
// What it costs to read a long program: the state above its last line, a check of it all, a check after one changed
// line with its findings in words, a comparison with another. Processor time, as Markdown.
#include "program/ProgramCheck.h"
#include "program/ProgramCompare.h"
#include "program/StateReader.h"

#include <cstdio>
#include <ctime>
#include <random>

namespace
{
constexpr int million = 1'000'000;

QByteArray program(int lines, const char* block)
{
    QByteArray text = "%\nO1000\nG21 G17 G40 G80 G90 G54 G98\nT1 M6\nG0 X0. Y0. Z50. S900 M3\n";
    for (int line = 0; line < lines; ++line)
        text += "N" + QByteArray::number(line % 10'000'000) + ' ' + block + '\n';
    return text + "M30\n%\n";
}

template <typename Work> double seconds(Work work)
{
    const auto begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

void measure(const char* name, int lines, const char* block)
{
    const QByteArray text = program(lines, block);
    const double state = seconds([&] { StateReader::above(lines, text, Control::FanucMill); });
    ProgramCheck check({CheckRules::Maker::Fanuc, true, true, true});
    const double whole = seconds([&] { check.checkAll(text); });
    const double change = seconds([&] {
        check.replaceLines(lines / 2, 1, block);
        check.report([block](qsizetype) { return QByteArray(block); });
    });
    std::printf("| %d blocks, %s, %.0f MB | %.2f s | %.2f s | %.1f ms |\n", lines, name,
                static_cast<double>(text.size()) / 1e6, state, whole, 1000 * change);
    std::fflush(stdout);
}

// A million blocks of so many kinds, by chance; every `changed`th is another one (0: none is).
QByteArray programByChance(unsigned kinds, int changed, unsigned seed)
{
    std::mt19937 chance(seed);
    QByteArray text = "%\nO1000\n";
    for (int line = 0; line < million; ++line) {
        text += "N" + QByteArray::number(line) + " G1 X" + QByteArray::number(chance() % kinds) + " Y78.901 Z-2.5";
        text += changed > 0 && line % changed == changed / 2 ? " F9\n" : "\n";
    }
    return text + "M30\n%\n";
}

void compare(const char* name, const QByteArray& left, const QByteArray& right)
{
    qsizetype differences = 0;
    const double time = seconds([&] { differences = ProgramCompare::compare(left, right, {})->differences().size(); });
    std::printf("| %d blocks, %s | %lld | %.2f s |\n", million, name, static_cast<long long>(differences), time);
    std::fflush(stdout);
}

void compareAll()
{
    constexpr unsigned endless = 2'000'000'000;
    std::printf("\n| Two programs | Differences | Compared in |\n|---|---|---|\n");
    const QByteArray surface = programByChance(endless, 0, 1), holes = programByChance(1000, 0, 1);
    compare("the same", surface, surface);
    compare("every thousandth changed", surface, programByChance(endless, 1000, 1));
    compare("every tenth changed", surface, programByChance(endless, 10, 1));
    compare("1000 kinds, every thousandth changed", holes, programByChance(1000, 1000, 1));
    compare("totally different", surface, programByChance(endless, 0, 2));
    compare("1000 kinds, totally different", holes, programByChance(1000, 0, 2));
    compare("3 kinds, totally different", programByChance(3, 0, 1), programByChance(3, 0, 2));
}
} // namespace

int main()
{
    std::printf("\n| Program | State above its last line | Check of it all | Check after a changed line |\n"
                "|---|---|---|---|\n");
    measure("absolute", million, "G1 X-123.456 Y78.901 Z-2.5 F1200");
    measure("incremental", million, "G91 G1 X-.456 Y.9012 Z-.005 F1200");
    measure("drilling", million, "G81 X-123.456 Y78.901 Z-2.5 R2. F200");
    measure("macros", million, "#101=#102+[#103*2] (NEXT)");
    measure("a flaw in each", million, "g1 x1. x2. z (open");
    measure("absolute", 2'600'000, "G1 X-123.456 Y78.901 Z-2.5 F1200");
    compareAll();
    return 0;
}
