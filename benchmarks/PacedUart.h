// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "benchmarks/PacedLine.h"

#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <sys/types.h>
#include <termios.h>

/// One line of the model: what the program does with its descriptor comes in, and bytes go to the pseudo-terminal in
/// the line's own time. That time is reckoned, not measured: however late a call comes, all that is due by then is made
/// up for, at the times at which it was due. Any thread.
class PacedUart
{
public:
    /// Without a chosen chip what arrives is left to the pseudo-terminal.
    PacedUart(int fd, const std::optional<PacedLine::Chip>& chosen);

    /// What the driver makes of these settings. As serial drivers do: what is beyond the chip's reach stays as it was
    /// and is no error.
    termios withinReach(const termios& settings) const;
    void lineChanged();
    // As the system calls.
    ssize_t write(const char* bytes, std::size_t count);
    ssize_t read(char* bytes, std::size_t count);
    /// Does what is due. Returns what is in the driver's buffer.
    int pending();
    void flushOutput();
    void flushInput();
    /// Waits until all bytes are out. Afterwards the descriptor is no longer touched.
    void end();
    PacedLine::Record record();

private:
    using Clock = std::chrono::steady_clock;

    struct Arrival {
        Clock::time_point visible;
        std::string bytes;
    };

    Clock::time_point advance();
    void refill();
    void takeArrivals(Clock::time_point now);
    std::size_t giveArrivals(Clock::time_point now, char* bytes, std::size_t count);

    const int fd_;
    const bool keepsArrivals_;
    const PacedLine::Chip chip_;
    std::mutex mutex_;
    bool isOpen_ = true;
    std::string buffer_;                    // the driver's
    std::string fifo_;                      // the chip's, and the byte on the line
    Clock::time_point free_ = Clock::now(); // when the line had carried the byte before the first of fifo_
    std::chrono::duration<double> byteTime_{10 / 9600.0};
    std::deque<Arrival> arrivals_;
    ssize_t readResult_ = -1; // of the pseudo-terminal
    int readError_ = 0;
    PacedLine::Record record_;
};
