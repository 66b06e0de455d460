// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>

/// The cable between two programs, each on a pseudo-terminal of its own: carries what they send both ways at the line's
/// speed, 10 bits a character. A character arrives when its last bit would, and takes whatever the sender hands over:
/// there is no end to its buffer.
class PacedCable
{
public:
    using Clock = std::chrono::steady_clock;

    /// Where characters of an end come from and where characters for it go. The descriptors stay the caller's.
    struct End {
        int out, in;
    };
    /// What one way has carried so far.
    struct Carried {
        std::int64_t characters = 0;
        Clock::time_point first;      ///< when the first one began
        Clock::time_point last;       ///< when the last one arrived
        Clock::time_point lastButOne; ///< when the one before it did, if it came alone
    };

    PacedCable(End one, End other, int baud);

    Carried fromOne() const { return carried(ways_[0]); }
    Carried fromOther() const { return carried(ways_[1]); }

private:
    struct Character {
        char value;
        Clock::time_point due;
    };
    struct Way {
        int from, to;
        std::deque<Character> onTheWay = {};
        Clock::time_point free = {}; // when the line has carried all of them
        Carried carried = {};
    };

    void run(const std::stop_token& stop);
    void take(Way& way) const;
    void give(Way& way);
    Clock::time_point nextDelivery() const;
    Carried carried(const Way& way) const;

    const Clock::duration characterTime_;
    mutable std::mutex mutex_; // of `carried`
    std::array<Way, 2> ways_;
    std::jthread thread_;
};
