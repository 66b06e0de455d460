// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "simulator/XModem.h"

#include <chrono>

namespace cncsim
{
/// A control that takes a program in by XModem with checksum. Knows no line: bytes come in, replies go out.
class XModemReceiver
{
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit XModemReceiver(const XModemSettings& settings) : settings_(settings) {}

    /// Takes what has arrived; returns the replies.
    std::string take(const std::string& bytes, Time now);
    /// Call regularly; returns NAK when it is time to ask.
    std::string tick(Time now);

    bool isComplete() const { return state_ == State::Waiting && programs_ > 0; }
    std::size_t programs() const { return programs_; }
    const std::string& data() const { return data_; } ///< of the last program, padding included
    std::size_t blocks() const { return blocks_; }
    std::size_t repeatedBlocks() const { return repeatedBlocks_; }
    const std::string& problem() const { return problem_; }

private:
    enum class State { Waiting, Receiving, Stopped };

    std::string takeByte(char byte);
    std::string takeBlock();
    std::string takeEnd();
    unsigned numberOf(std::size_t block) const;
    std::string refuse(const std::string& why);
    std::string cancelFor(const std::string& why);
    void note(const std::string& problem);

    XModemSettings settings_;
    State state_ = State::Waiting;
    std::string packet_; // the block under way, SOH included
    std::string data_;
    std::size_t blocks_ = 0;
    std::size_t repeatedBlocks_ = 0;
    std::size_t programs_ = 0;
    bool hasRefused_ = false; // the chosen block
    bool hasFailedEnd_ = false;
    bool isMute_ = false;
    bool isPollDue_ = true; // it asks at once
    Time lastSign_{};       // from either side
    std::string problem_;
};
} // namespace cncsim
