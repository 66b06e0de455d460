// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <chrono>

/// How much may be handed to a driver so that little is on its way to the control when it says stop. A driver cannot be
/// asked how much it still holds: a USB adapter's chip has a buffer of its own (up to 640 bytes), which the system does
/// not count. So the clock decides: a character that the line has had the time for is out. The caller passes the time.
class LineClock
{
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::nanoseconds;

    /// Speed in baud, 0 for a line that takes everything at once; bits of a character with start and stop bits.
    LineClock(unsigned long speed, int bits);

    /// Characters that may be handed over now.
    qsizetype room(Time now) const;
    void wrote(Time now, qsizetype characters);
    /// How long to sleep until there is room for that many, or until most of the room is free: waking up for each
    /// character would cost the processor.
    Duration untilRoom(Time now, qsizetype characters) const;
    /// Characters that may be on their way at most.
    qsizetype mostAhead() const { return mostAhead_; }

private:
    Duration ahead(Time now) const;

    Duration character_{};
    qsizetype mostAhead_ = 0;
    Time busyUntil_{}; // by then the line has carried all that was handed over
};
