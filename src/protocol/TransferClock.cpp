// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/TransferClock.h"

#include <algorithm>
#include <cmath>

namespace
{
// A write may take this much longer than its bytes before the line counts as held: drivers and adapters buffer, and
// neither they nor the event loop are punctual.
constexpr double heldFactor = 1.25;
constexpr qint64 heldMargin = 1000; // ms

constexpr double priorTime = 10'000;  // ms; the line's own speed weighs as much as this much sending
constexpr double windowTime = 60'000; // ms at the line's speed; what is older than that hardly counts
// A longer pause is the operator's or a tool change, not the pace of the program.
constexpr qint64 longestPause = 60'000; // ms
constexpr double windowUnits = 16'384;  // where the line's speed is not known

// The remaining time shown counts down by itself; it is corrected slowly, and only when it is clearly off.
constexpr double followTime = 5000; // ms
constexpr double deadBand = 0.05;
constexpr double leastBand = 2000; // ms
} // namespace

double TransferClock::msPerByte(unsigned long baud, int stopBits)
{
    return baud > 0 ? 1000.0 * (1 + 8 + stopBits) / static_cast<double>(baud) : 0;
}

double TransferClock::atLineSpeed(const Send& send)
{
    return static_cast<double>(send.to - send.from) * send.bytesPerUnit * send.msPerByte;
}

void TransferClock::begin(qint64 now, const Send& send)
{
    *this = {};
    send_ = send;
    running_ = true;
    startedAt_ = paceSince_ = now;
    position_ = send.from;
    const double msPerUnit = send.msPerByte * send.bytesPerUnit;
    if (msPerUnit <= 0) return;
    paceTime_ = priorTime;
    paceUnits_ = priorTime / msPerUnit;
}

void TransferClock::wrote(qint64 now, qint64 bytes)
{
    bytesBefore_ = pendingBytes_;
    pendingBytes_ = bytes;
    pendingSince_ = now;
}

void TransferClock::completed(qint64 now, qint64 position)
{
    if (!pendingSince_ || !running_) return;
    pendingSince_.reset();
    bytesSent_ += pendingBytes_;
    const double units = static_cast<double>(std::max<qint64>(position - position_, 0));
    const double msPerUnit = send_.msPerByte * send_.bytesPerUnit;
    const double kept = std::exp(-units / (msPerUnit > 0 ? windowTime / msPerUnit : windowUnits));
    paceTime_ = paceTime_ * kept + static_cast<double>(std::min(now - paceSince_, longestPause));
    paceUnits_ = paceUnits_ * kept + units;
    paceSince_ = now;
    position_ = position;
}

void TransferClock::stop(qint64 now)
{
    elapsedBefore_ = elapsed(now);
    running_ = false;
}

void TransferClock::resume(qint64 now)
{
    running_ = true;
    startedAt_ = paceSince_ = shownAt_ = now;
    if (pendingSince_) pendingSince_ = now;
}

bool TransferClock::isHeld(qint64 now) const
{
    if (!running_ || !pendingSince_) return false;
    const double wireTime = static_cast<double>(bytesBefore_ + pendingBytes_) * send_.msPerByte;
    return static_cast<double>(waitingFor(now)) > heldFactor * wireTime + heldMargin;
}

qint64 TransferClock::waitingFor(qint64 now) const
{
    return pendingSince_ ? now - *pendingSince_ : 0;
}

qint64 TransferClock::elapsed(qint64 now) const
{
    return elapsedBefore_ + (running_ ? now - startedAt_ : 0);
}

std::optional<qint64> TransferClock::remaining(qint64 now)
{
    if (paceUnits_ <= 0) return {};
    const double computed = static_cast<double>(std::max<qint64>(send_.to - position_, 0)) * paceTime_ / paceUnits_;
    if (!shown_) {
        shown_ = computed;
    } else if (running_ && !isHeld(now)) {
        const double passed = static_cast<double>(now - shownAt_);
        *shown_ = std::max(*shown_ - passed, 0.0);
        const double off = computed - *shown_;
        if (std::abs(off) > std::max(leastBand, deadBand * *shown_))
            *shown_ += off * std::min(passed / followTime, 1.0);
    }
    shownAt_ = now;
    return static_cast<qint64>(*shown_);
}
