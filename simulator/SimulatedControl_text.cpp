// SPDX-License-Identifier: GPL-3.0-or-later
// A program as text: taken in, judged, and punched out.
#include "simulator/SimulatedControl.h"

#include "simulator/Parity.h"

#include <algorithm>
#include <utility>

namespace cncsim
{
namespace
{
void add(std::string& problems, const std::string& problem)
{
    if (problem.empty()) return;
    if (!problems.empty()) problems += "; ";
    problems += problem;
}

void add(std::string& problems, std::size_t count, const std::string& what)
{
    if (count > 0) add(problems, std::to_string(count) + what);
}

double secondsBetween(std::chrono::steady_clock::time_point from, std::chrono::steady_clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}
} // namespace

void SimulatedControl::takeText(const std::string& bytes)
{
    state_.lastByte = Clock::now();
    for (const char byte : bytes)
        takeByte(byte);
    auto& report = state_.report;
    report.lostBytes = state_.buffer.lostBytes();
    report.mostAfterXoff = state_.buffer.mostAfterXoff();
}

void SimulatedControl::takeByte(char raw)
{
    const auto byte = static_cast<unsigned char>(raw);
    const char code = static_cast<char>(settings_.evenParity ? byte & 0x7F : byte);
    if (settings_.evenParity && !hasEvenParity(byte)) ++state_.report.parityErrors;
    if (settings_.xonXoff && (code == xon || code == xoff)) { // also after the last byte: never part of a program
        state_.isPunchHeld = code == xoff;
        return;
    }
    state_.report.isComplete = false;
    state_.isJudged = false;
    if (!state_.buffer.accept()) return;
    state_.report.received.push_back(code);
    if (state_.reader.take(code)) programEnded();
}

void SimulatedControl::programEnded()
{
    auto& report = state_.report;
    auto judged = state_.reader.judge();
    state_.reader.next();
    state_.isJudged = true;
    add(state_.pastProblem, judged.problem);
    report.program = std::move(judged.program);
    ++report.programs;
    report.isComplete = true;
    report.problem = problems({});
    writeOutput();
}

std::string SimulatedControl::problems(const std::string& ofThisProgram) const
{
    std::string all = state_.pastProblem;
    add(all, ofThisProgram);
    add(all, state_.report.parityErrors, " bytes with wrong parity");
    add(all, state_.buffer.lostBytes(), " bytes lost after XOFF");
    return all;
}

void SimulatedControl::judgeSilence(Clock::time_point now)
{
    if (state_.isJudged || now - state_.lastByte < std::chrono::milliseconds(settings_.silenceMs)) return;
    state_.isJudged = true;
    state_.report.problem = problems({}); // also those of bytes after a program's end
    if (state_.reader.isEmpty()) return;
    if (!state_.reader.hasVisibleEnd()) return programEnded();
    state_.report.problem = problems(state_.reader.judge().problem);
}

void SimulatedControl::workOff(Clock::time_point now)
{
    state_.buffer.workOff(secondsBetween(state_.lastWork, now));
    state_.lastWork = now;
    if (!settings_.xonXoff) return;
    const auto signal = state_.buffer.atMarks();
    if (signal != InputBuffer::Signal::None) reply(signal == InputBuffer::Signal::Xoff ? xoff : xon);
    state_.report.xoffCount = state_.buffer.xoffCount();
}

void SimulatedControl::giveStartSignal(Clock::time_point now)
{
    const bool isDue = settings_.start == StartSignal::AfterDelay && state_.report.received.empty() &&
                       now - state_.lastStart >= std::chrono::milliseconds(settings_.startDelayMs);
    if (!isDue) return;
    state_.lastStart = now;
    if (!pty_.hasUnread()) reply(xon); // signals must not pile up for a program that is not there yet
}

void SimulatedControl::punchOut(Clock::time_point now)
{
    auto& report = state_.report;
    const bool startsByItself = settings_.punchDelayMs >= 0 && !state_.isPunching && !report.isPunched &&
                                now - state_.begin >= std::chrono::milliseconds(settings_.punchDelayMs);
    if (startsByItself) {
        state_.isPunching = true;
        state_.lastPunch = now;
    }
    if (!state_.isPunching) return;
    state_.punchCredit += settings_.punchRate * secondsBetween(state_.lastPunch, now);
    state_.lastPunch = now;
    if (state_.isPunchHeld) state_.punchCredit = 0;
    const auto most = settings_.punchRate > 0 ? static_cast<std::size_t>(state_.punchCredit) : pieceSize;
    const auto piece = settings_.punchProgram.substr(report.punchedBytes, std::min(most, pieceSize));
    if (!state_.isPunchHeld && !piece.empty()) {
        const auto count = pty_.writeSome(marked(piece));
        report.punchedBytes += count;
        state_.punchCredit -= static_cast<double>(count);
        if (count < piece.size()) state_.punchCredit = 0; // nothing is saved up for a burst later
    }
    report.isPunched = report.punchedBytes == settings_.punchProgram.size();
    state_.isPunching = !report.isPunched;
}
} // namespace cncsim
