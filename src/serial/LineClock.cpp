// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/LineClock.h"

#include <algorithm>
#include <limits>

namespace
{
// A control that allows ten characters after its stop has room for these and for a late wake-up.
constexpr std::chrono::milliseconds longestAhead{4};
constexpr qsizetype fewestAhead = 4;
// Behind a chip whose clock is 1 % slow, a writer that keeps nominal time fills the chip's buffer in a long program.
constexpr double slowness = 1.02;
} // namespace

LineClock::LineClock(unsigned long speed, int bits)
{
    if (speed == 0) {
        mostAhead_ = std::numeric_limits<qsizetype>::max();
        return;
    }
    character_ = Duration(static_cast<qint64>(1e9 * bits / static_cast<double>(speed) * slowness));
    mostAhead_ = std::max<qsizetype>(fewestAhead, longestAhead / character_);
}

LineClock::Duration LineClock::ahead(Time now) const
{
    return busyUntil_ > now ? busyUntil_ - now : Duration::zero();
}

qsizetype LineClock::room(Time now) const
{
    if (character_ == Duration::zero()) return mostAhead_;
    const qsizetype onTheWay = (ahead(now) + character_ - Duration(1)) / character_; // a begun one counts
    return std::max<qsizetype>(0, mostAhead_ - onTheWay);
}

void LineClock::wrote(Time now, qsizetype characters)
{
    // Time in which nothing was written is lost: a writer that slept too long must not make up for it with a burst.
    busyUntil_ = std::max(now, busyUntil_) + characters * character_;
}

LineClock::Duration LineClock::untilRoom(Time now, qsizetype characters) const
{
    const auto piece = std::min(characters, mostAhead_ - mostAhead_ / 4);
    return std::max<Duration>(Duration::zero(), ahead(now) - (mostAhead_ - piece) * character_);
}
