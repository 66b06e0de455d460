// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/ProgramCheck.h"

#include "program/Lines.h"

#include <QHash>

#include <algorithm>

using Maker = CheckRules::Maker;

namespace
{
void count(std::array<qsizetype, lineFindingKindCount>& counts, LineCheck::Marks marks, qsizetype by)
{
    for (std::size_t kind = 0; kind < lineFindingKindCount; ++kind) {
        if ((marks >> kind & 1U) != 0) counts[kind] += by;
    }
}

void add(CheckReport& report, FindingKind kind, Severity severity, qsizetype line, const QString& text)
{
    ++report.counts[static_cast<std::size_t>(kind)];
    if (report.findings.size() < CheckReport::mostFindings) report.findings.append({kind, severity, line, text});
}
} // namespace

bool ProgramCheck::checkAll(QByteArrayView text, const std::atomic<bool>* cancelled)
{
    constexpr std::size_t linesBetweenLooks = 4096;
    marks_.clear();
    counts_.fill(0);
    for (Lines lines(text); !lines.atEnd();) {
        if (cancelled && marks_.size() % linesBetweenLooks == 0 && *cancelled) {
            marks_.assign(1, 0);
            counts_.fill(0);
            return false;
        }
        marks_.push_back(lines_.check(lines.next()));
        if ((marks_.back() & LineCheck::findings) != 0) count(counts_, marks_.back(), 1);
    }
    const bool endsWithLineEnd = text.isEmpty() || text.back() == '\n' || text.back() == '\r';
    if (endsWithLineEnd) marks_.push_back(0);
    return true;
}

void ProgramCheck::replaceLines(qsizetype first, qsizetype removed, QByteArrayView text)
{
    const qsizetype start = std::clamp<qsizetype>(first - 1, 0, lineCount());
    const qsizetype end = std::clamp<qsizetype>(start + removed, start, lineCount());
    for (qsizetype line = start; line < end; ++line)
        count(counts_, marks_[static_cast<std::size_t>(line)], -1);
    ProgramCheck changed(lines_.rules());
    changed.checkAll(text);
    for (std::size_t kind = 0; kind < lineFindingKindCount; ++kind)
        counts_[kind] += changed.counts_[kind];
    const auto kept = std::min(end - start, changed.lineCount());
    std::copy_n(changed.marks_.begin(), kept, marks_.begin() + start);
    if (kept < end - start)
        marks_.erase(marks_.begin() + start + kept, marks_.begin() + end);
    else
        marks_.insert(marks_.begin() + end, changed.marks_.begin() + kept, changed.marks_.end());
}

qsizetype ProgramCheck::next(qsizetype from, Marks marks) const
{
    const auto found = std::find_if(marks_.begin() + std::min(from - 1, lineCount()), marks_.end(),
                                    [marks](Marks line) { return (line & marks) != 0; });
    return found == marks_.end() ? 0 : found - marks_.begin() + 1;
}

qsizetype ProgramCheck::last(Marks marks) const
{
    const auto found =
        std::find_if(marks_.rbegin(), marks_.rend(), [marks](Marks line) { return (line & marks) != 0; });
    return marks_.rend() - found;
}

CheckReport ProgramCheck::report(const LineText& lineText)
{
    CheckReport report;
    checkPercents(report);
    checkNumbers(report, lineText);
    checkEnds(report);
    for (qsizetype line = next(1, LineCheck::findings); line > 0 && report.findings.size() < CheckReport::mostFindings;
         line = next(line + 1, LineCheck::findings))
        report.findings += lines_.describe(lineText(line), line);
    std::copy(counts_.begin(), counts_.end(), report.counts.begin());
    for (const qsizetype kind : report.counts)
        report.total += kind;
    std::stable_sort(report.findings.begin(), report.findings.end(),
                     [](const Finding& one, const Finding& other) { return one.line < other.line; });
    return report;
}

void ProgramCheck::checkPercents(CheckReport& report) const
{
    const qsizetype first = next(1, LineCheck::hasText);
    const qsizetype lastPercent = last(LineCheck::hasPercent);
    if (first == 0) return; // an empty program is told where it is sent
    const auto isPercent = [this](qsizetype line) {
        return (marks_[static_cast<std::size_t>(line - 1)] & LineCheck::hasPercent) != 0;
    };
    const bool atHead = isPercent(first);
    const bool atTail = isPercent(last(LineCheck::hasText)) && !(atHead && lastPercent == first);
    const bool isFanuc = lines_.rules().maker == Maker::Fanuc;
    if (lines_.rules().maker == Maker::Any) checkPercentsKept(report, atHead, atTail);
    for (qsizetype line = next(1, LineCheck::hasPercent); line > 0; line = next(line + 1, LineCheck::hasPercent)) {
        if ((line == first && atHead) || line == lastPercent) continue;
        add(report, FindingKind::PercentInside, Severity::Warning, line,
            isFanuc ? QStringLiteral("This % is taken out: what stands before and behind it goes out as one program.")
                    : QStringLiteral("The control may stop reading at this %."));
    }
    const bool hasTextBehind = lastPercent > 0 && !(atHead && lastPercent == first) && !atTail;
    if (!hasTextBehind) return;
    add(report, FindingKind::TextAfterPercent, Severity::Warning, next(lastPercent + 1, LineCheck::hasText),
        isFanuc ? QStringLiteral("Text stands behind the last %: it goes out as part of the program.")
                : QStringLiteral("Text stands behind the last %: the control may not read it, or take it for another "
                                 "program."));
}

// Where the program's own "%" go out as they are.
void ProgramCheck::checkPercentsKept(CheckReport& report, bool atHead, bool atTail) const
{
    const CheckRules& rules = lines_.rules();
    if (!atHead && !rules.headHasPercent)
        add(report, FindingKind::PercentMissing, Severity::Note, 0,
            QStringLiteral("Neither the program nor the machine's start string begins with %."));
    if (!atTail && !rules.tailHasPercent)
        add(report, FindingKind::PercentMissing, Severity::Note, 0,
            QStringLiteral("Neither the program nor the machine's end string ends with %."));
    if (atHead && rules.headHasPercent)
        add(report, FindingKind::PercentDoubled, Severity::Warning, next(1, LineCheck::hasText),
            QStringLiteral("The machine's start string sends a % too: the control gets two."));
    if (atTail && rules.tailHasPercent)
        add(report, FindingKind::PercentDoubled, Severity::Warning, last(LineCheck::hasText),
            QStringLiteral("The machine's end string sends a % too: the control gets two."));
}

void ProgramCheck::checkNumbers(CheckReport& report, const LineText& lineText)
{
    const bool needsNumber = lines_.rules().maker == Maker::Fanuc;
    if (needsNumber && next(1, LineCheck::hasText) > 0 && next(1, LineCheck::hasProgramNumber) == 0)
        add(report, FindingKind::NumberMissing, Severity::Warning, 0,
            QStringLiteral("The program has no O number: the control may refuse it or store it under another."));
    QHash<QByteArray, qsizetype> lines;
    qsizetype looked = 0;
    for (qsizetype line = next(1, LineCheck::hasProgramNumber); line > 0 && looked < CheckReport::mostFindings;
         line = next(line + 1, LineCheck::hasProgramNumber), ++looked) {
        const QByteArray number = lines_.programNumber(lineText(line));
        const qsizetype before = lines.value(number);
        if (before == 0)
            lines.insert(number, line);
        else
            add(report, FindingKind::NumberDoubled, Severity::Warning, line,
                QStringLiteral("O%1 begins a second time; the first is on line %2.")
                    .arg(QString::fromUtf8(number))
                    .arg(before));
    }
}

// Each program of the text needs an end before the next one begins.
void ProgramCheck::checkEnds(CheckReport& report) const
{
    if (next(1, LineCheck::hasText) == 0) return;
    const bool isOkuma = lines_.rules().maker == Maker::Okuma;
    const QString text =
        QStringLiteral("%1 has no end: %2.")
            .arg(next(1, LineCheck::hasProgramNumber) == 0 ? QStringLiteral("The program")
                                                           : QStringLiteral("The program that begins here"),
                 isOkuma ? QStringLiteral("M02, M30 or RTS") : QStringLiteral("M02, M30 or M99"));
    const auto addMissing = [&](qsizetype line) {
        add(report, FindingKind::EndMissing, Severity::Warning, line, text);
    };
    qsizetype begin = 0;
    bool hasEnd = true; // before the first O number nothing needs one, unless there is no O number
    for (qsizetype line = next(1, LineCheck::hasProgramNumber | LineCheck::hasEnd); line > 0;
         line = next(line + 1, LineCheck::hasProgramNumber | LineCheck::hasEnd)) {
        const Marks marks = marks_[static_cast<std::size_t>(line - 1)];
        if ((marks & LineCheck::hasProgramNumber) != 0) {
            if (!hasEnd) addMissing(begin);
            begin = line;
            hasEnd = false;
        }
        if ((marks & LineCheck::hasEnd) != 0) hasEnd = true;
    }
    const bool isUnnumbered = begin == 0;
    if (!hasEnd || (isUnnumbered && next(1, LineCheck::hasEnd) == 0)) addMissing(begin);
}

std::optional<CheckReport> ProgramCheck::check(QByteArrayView text, const CheckRules& rules,
                                               const std::atomic<bool>* cancelled)
{
    ProgramCheck check(rules);
    if (!check.checkAll(text, cancelled)) return std::nullopt;
    // The report asks for lines more than once, but mostly for one further down.
    Lines lines(text);
    qsizetype at = 0;
    QByteArrayView line;
    return check.report([&](qsizetype number) {
        if (number < at) {
            lines = Lines(text);
            at = 0;
        }
        for (; at < number; ++at)
            line = lines.atEnd() ? QByteArrayView() : lines.next();
        return line.toByteArray();
    });
}
