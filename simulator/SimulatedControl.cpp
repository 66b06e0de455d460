// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/SimulatedControl.h"

#include "simulator/Parity.h"

#include <algorithm>
#include <fstream>
#include <utility>

namespace cncsim
{
namespace
{
constexpr int tickMs = 2;
constexpr std::size_t pieceSize = 4096; // bytes read or punched at a time

constexpr char xon = 17;  // DC1, also the start signal
constexpr char xoff = 19; // DC3

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

std::string Report::line() const
{
    const bool hasPunched = punchedBytes > 0;
    std::string text = hasPunched ? std::to_string(punchedBytes) + " bytes punched out"
                                  : std::to_string(received.size()) + " bytes received, " +
                                        std::to_string(program.size()) + " of program";
    if (repeatedBlocks > 0) text += ", " + std::to_string(repeatedBlocks) + " blocks repeated";
    if (!problem.empty()) return text + ": " + problem;
    return text + ((hasPunched ? isPunched : isComplete) ? ": complete and correct" : ": not complete");
}

SimulatedControl::State::State(const Settings& settings)
    : reader(settings.framing), buffer({settings.readRate, settings.highMark, settings.lowMark, settings.overrunRoom}),
      receiver(settings.xmodem), sender(settings.xmodem, settings.punchProgram)
{
}

SimulatedControl::SimulatedControl(Settings settings)
    : settings_(std::move(settings)), pty_(settings_.linkPath), state_(settings_), thread_([this] { run(); })
{
}

SimulatedControl::~SimulatedControl()
{
    stopping_ = true;
    thread_.join();
    writeOutput();
}

void SimulatedControl::pressStart()
{
    reply(xon);
}

void SimulatedControl::holdLine()
{
    const std::lock_guard lock(mutex_);
    if (state_.buffer.holdByHand(true)) reply(xoff);
    state_.report.xoffCount = state_.buffer.xoffCount();
}

void SimulatedControl::releaseLine()
{
    const std::lock_guard lock(mutex_);
    if (state_.buffer.holdByHand(false)) reply(xon);
}

void SimulatedControl::punch()
{
    const std::lock_guard lock(mutex_);
    state_.isPunching = true;
    state_.isPunchHeld = false;
    state_.report.isPunched = false;
    state_.report.punchedBytes = 0;
    state_.punchCredit = 0;
    state_.lastPunch = Clock::now();
}

void SimulatedControl::send(const std::string& bytes)
{
    pty_.write(marked(bytes));
}

Report SimulatedControl::report() const
{
    const std::lock_guard lock(mutex_);
    return state_.report;
}

bool SimulatedControl::isComplete() const
{
    const std::lock_guard lock(mutex_);
    return state_.report.isComplete;
}

std::size_t SimulatedControl::receivedBytes() const
{
    const std::lock_guard lock(mutex_);
    return state_.report.received.size();
}

bool SimulatedControl::waitComplete(int timeoutMs) const
{
    const auto end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!isComplete()) {
        if (Clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(tickMs));
    }
    return true;
}

void SimulatedControl::clear()
{
    const std::lock_guard lock(mutex_);
    state_ = State(settings_);
}

void SimulatedControl::run()
{
    std::size_t limit = pieceSize;
    while (!stopping_) {
        const std::string bytes = pty_.read(limit, tickMs);
        const auto now = Clock::now();
        const std::lock_guard lock(mutex_);
        if (settings_.protocol != Protocol::Text) {
            runXModem(bytes, now);
            continue;
        }
        if (!bytes.empty()) takeText(bytes);
        workOff(now);
        judgeSilence(now);
        giveStartSignal(now);
        punchOut(now);
        // Never past the high mark in one go: a real control notices it with the byte that reaches it.
        if (settings_.xonXoff) limit = std::min(pieceSize, state_.buffer.room());
    }
}

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
    state_.report.problem = problems({}); // also of bytes that came after a program's end
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

void SimulatedControl::runXModem(const std::string& bytes, Clock::time_point now)
{
    auto& report = state_.report;
    const std::size_t programsBefore = report.programs;
    report.received += bytes;
    const auto play = [&](auto& side) {
        std::string out = side.take(bytes, now);
        // What nobody reads must not pile up: a program that opens the device later would take it for replies.
        if (!pty_.hasUnread()) out += side.tick(now);
        if (!out.empty()) pty_.write(out);
        report.isComplete = side.isComplete();
        report.blocks = side.blocks();
        report.repeatedBlocks = side.repeatedBlocks();
        report.problem = side.problem();
    };
    if (settings_.protocol == Protocol::XModemReceive) {
        play(state_.receiver);
        report.programs = state_.receiver.programs();
        if (report.programs == programsBefore) return;
        report.program = state_.receiver.data();
        writeOutput();
        return;
    }
    play(state_.sender);
    report.punchedBytes = std::min(report.blocks * xmodem::dataSize, settings_.punchProgram.size());
    report.isPunched = report.isComplete;
    report.programs = report.isComplete ? 1 : 0;
}

void SimulatedControl::writeOutput() const
{
    const auto& report = state_.report;
    if (settings_.outputFile.empty() || report.received.empty()) return;
    std::ofstream(settings_.outputFile, std::ios::binary)
        << (settings_.protocol == Protocol::XModemReceive ? report.program : report.received);
}

std::string SimulatedControl::marked(std::string bytes) const
{
    if (!settings_.evenParity || settings_.protocol != Protocol::Text) return bytes;
    for (char& byte : bytes)
        byte = static_cast<char>(withEvenParity(static_cast<unsigned char>(byte)));
    return bytes;
}

void SimulatedControl::reply(char code)
{
    pty_.write(marked({code}));
}
} // namespace cncsim
