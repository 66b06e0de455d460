// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

using Time = std::chrono::steady_clock::time_point;

/// A control that works through a program by drip feed: it stops the line again and again, has little room behind its
/// stop, and drops what comes when that is full.
class Control
{
public:
    explicit Control(bool evenParity) : evenParity_(evenParity) {}

    /// A character has arrived. Returns what the control says to that: a stop, or nothing.
    std::optional<std::uint8_t> take(Time now, std::uint8_t character);
    /// When it lets the line go on; nothing while it does not hold it.
    std::optional<Time> releaseTime() const;
    /// Lets the line go on. Returns the start character.
    std::uint8_t release();

    /// What it found, as the end of a table row; what it was promised is in isContent().
    std::string report() const;
    bool isContent() const;

private:
    std::string expected() const;
    std::size_t count(int block) const;

    const bool evenParity_;
    std::string received_;
    std::size_t nextStop_ = 2000; // late enough for a chip's slow clock to have left characters behind in its buffer
    std::size_t afterStop_ = 0;
    std::size_t worst_ = 0;
    int stops_ = 0;
    bool isHolding_ = false;
    Time lastArrival_{};
};
