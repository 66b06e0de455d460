// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

/// Adds up how long a control holds the line. Knows no clock: time is passed in.
class HoldTimes
{
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::milliseconds;

    struct Sum {
        Duration inAll{0};
        Duration longest{0};
    };

    /// The line is held from now on, or it is not. As often as wanted.
    void note(bool isHeld, Time now)
    {
        if (isHeld == since_.has_value()) return;
        ended_ = sum(now);
        since_ = isHeld ? std::optional(now) : std::nullopt;
    }
    /// Begins anew; of a hold under way only what comes from now on counts.
    void restart(Time now)
    {
        ended_ = {};
        if (since_) since_ = now;
    }
    /// Up to now, with a hold under way.
    Sum sum(Time now) const
    {
        if (!since_) return ended_;
        const auto current = std::chrono::duration_cast<Duration>(now - *since_);
        return {ended_.inAll + current, std::max(ended_.longest, current)};
    }

private:
    Sum ended_; // of the holds that are over
    std::optional<Time> since_;
};
