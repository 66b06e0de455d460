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
        // Never past the high mark in one go: a real control notices it at the byte that reaches it.
        if (settings_.xonXoff) limit = std::min(pieceSize, state_.buffer.room());
    }
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
