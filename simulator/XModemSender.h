// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "simulator/XModem.h"

#include <chrono>

namespace cncsim
{
/// A control that sends a program by XModem with checksum, once. Knows no line: replies come in, blocks go out.
class XModemSender
{
public:
    using Time = std::chrono::steady_clock::time_point;

    XModemSender(const XModemSettings& settings, std::string program)
        : settings_(settings), program_(std::move(program))
    {
    }

    /// Takes what the receiver has sent, in one piece; returns what goes out.
    std::string take(const std::string& bytes, Time now);
    /// Call regularly; returns EOT again when its answer is missing.
    std::string tick(Time now);

    bool isComplete() const { return state_ == State::Complete; }
    std::size_t blocks() const { return acknowledged_; }
    std::size_t repeatedBlocks() const { return repeatedBlocks_; }
    const std::string& problem() const { return problem_; }

private:
    enum class State { Waiting, Sending, Ending, Complete, Stopped };

    std::string takeReply(char reply);
    std::string acknowledged();
    std::string sendNext();
    std::string sendEnd();
    std::string sendBlock();

    XModemSettings settings_;
    std::string program_;
    State state_ = State::Waiting;
    std::size_t block_ = 0; // the one under way, from 1
    std::size_t acknowledged_ = 0;
    std::size_t repeatedBlocks_ = 0;
    bool isRepeat_ = false; // block_ has been sent before
    bool hasDuplicated_ = false;
    bool hasMissedAck_ = false; // of EOT
    std::size_t ends_ = 0;      // how often EOT has been sent
    Time lastSign_{};
    std::string problem_;
};
} // namespace cncsim
