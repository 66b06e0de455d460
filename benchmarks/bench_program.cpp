// SPDX-License-Identifier: GPL-3.0-or-later
// What it costs to read a long program: the state above its last line, a check of it all, a check after one changed
// line with its findings in words. Processor time, as Markdown.
#include "program/ProgramCheck.h"
#include "program/StateReader.h"

#include <cstdio>
#include <ctime>

namespace
{
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
} // namespace

int main()
{
    std::printf("\n| Program | State above its last line | Check of it all | Check after a changed line |\n"
                "|---|---|---|---|\n");
    constexpr int million = 1'000'000;
    measure("absolute", million, "G1 X-123.456 Y78.901 Z-2.5 F1200");
    measure("incremental", million, "G91 G1 X-.456 Y.9012 Z-.005 F1200");
    measure("drilling", million, "G81 X-123.456 Y78.901 Z-2.5 R2. F200");
    measure("macros", million, "#101=#102+[#103*2] (NEXT)");
    measure("a flaw in each", million, "g1 x1. x2. z (open");
    measure("absolute", 2'600'000, "G1 X-123.456 Y78.901 Z-2.5 F1200");
    return 0;
}
