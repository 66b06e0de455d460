// SPDX-License-Identifier: GPL-3.0-or-later
// Whatever a program holds: its state is read and a start is proposed, the check finds what it finds whether the text
// came at once or line by line, and nothing of that refers to a line or bytes that are not there.
#include "fuzz/Fuzz.h"
#include "program/Lines.h"
#include "program/ProgramCheck.h"
#include "program/Restart.h"
#include "program/StateReader.h"

#include <algorithm>

namespace
{
void readState(QByteArrayView text, Control control, qsizetype lines)
{
    const auto state = *StateReader::above(lines + 1, text, control);
    PROMISE(state.line == lines + 1 && state.clearLine <= state.line && state.contourLine < state.line);
    for (const auto& word : state.modal)
        PROMISE(word.line < state.line);
    for (const auto& axis : state.axes)
        PROMISE(axis.line < state.line && (axis.isKnown() ? Decimal::from(axis.text) || !axis.isSum : true));
    for (const auto& remark : state.remarks)
        PROMISE(remark.firstLine >= 1 && remark.firstLine <= remark.lastLine && remark.lastLine <= lines);
    const Restart restart = proposeRestart(state);
    PROMISE(!restart.warnings.isEmpty());
    PROMISE(canStart(state) || restart.blocks.isEmpty());
    for (const auto& block : restart.blocks) {
        PROMISE(!block.text.isEmpty() && !block.text.contains('\n') && !block.text.contains('#'));
        PROMISE(std::all_of(block.lines.begin(), block.lines.end(), [&](auto line) { return line < state.line; }));
    }
}

void check(const QByteArray& text, const CheckRules& rules)
{
    ProgramCheck whole(rules), piecewise(rules);
    PROMISE(whole.checkAll(text));
    QByteArrayList lines;
    for (Lines left(text); !left.atEnd();)
        lines.append(left.next().toByteArray());
    while (lines.size() < whole.lineCount())
        lines.append(QByteArray());
    for (qsizetype line = 1; line <= lines.size(); ++line)
        piecewise.replaceLines(line, line == 1 ? 1 : 0, lines[line - 1]);
    const auto lineText = [&lines](qsizetype number) { return lines[number - 1]; };
    const CheckReport report = whole.report(lineText);
    PROMISE(piecewise.lineCount() == whole.lineCount() && piecewise.report(lineText).counts == report.counts);
    PROMISE((report.total == 0) == report.findings.isEmpty());
    for (const auto& finding : report.findings)
        PROMISE(finding.line >= 0 && finding.line <= lines.size() && !finding.text.isEmpty());
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray input = Fuzz::bytes(data, size);
    const int choice = Fuzz::takeChoice(input);
    qsizetype lines = 0;
    for (Lines left(input); !left.atEnd(); left.next())
        ++lines;
    readState(input, static_cast<Control>(choice & 3), lines);
    check(input,
          {static_cast<CheckRules::Maker>(choice % 3), (choice & 8) != 0, (choice & 16) != 0, (choice & 32) != 0});
    return 0;
}
