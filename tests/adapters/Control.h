// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Row.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using Time = std::chrono::steady_clock::time_point;

/// A control that works through a program by drip feed: late in the program it stops the line again and again, counts
/// what comes after each stop, and in the end judges all that came.
class Control
{
public:
    explicit Control(const Row& row) : row_(row) {}

    /// A character has arrived. True if the control stops the line at that.
    bool take(Time now, std::uint8_t character);
    /// How many characters have to arrive until it stops the line.
    std::size_t untilStop() const;
    /// The adapter has reported to the computer what the control says.
    void reported(Time now);
    /// When it lets the line go on; nothing while it does not hold it.
    std::optional<Time> releaseTime() const;
    void release();

    /// What it found: holds, median, worst and most promised characters after a stop, blocks lost, blocks twice, and
    /// whether the program is right.
    std::string report() const;
    /// It got what it was promised.
    bool isContent() const;

private:
    struct Hold {
        std::size_t after = 0;          // characters after the stop
        std::chrono::nanoseconds delay; // until the adapter had reported it
    };

    std::string expected() const;
    std::size_t count(int block) const;
    std::size_t middle() const;
    const Hold& worst() const;
    std::size_t promised(const Hold& hold) const;

    const Row row_;
    std::string received_;
    std::size_t nextStop_ = 10'000; // by then a chip's slow clock has left 100 characters behind in its buffer
    std::vector<Hold> holds_;
    bool isHolding_ = false, isReported_ = false;
    Time stopped_{}, lastArrival_{};
};
