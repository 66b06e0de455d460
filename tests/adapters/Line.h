// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Control.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// The chip's buffer and the line from there to the control and back. Exact to the character whenever it is looked at:
/// a late wake-up changes neither the line's speed nor when a stop takes effect.
class Line
{
public:
    /// How a chip holds the line by itself.
    struct OwnFlow {
        std::uint8_t stop = 0, start = 0;
    };

    Line(Control& control, const Row& row, std::size_t bufferSize, std::chrono::milliseconds toHost);

    std::size_t room() const { return bufferSize_ - buffer_.size(); }
    bool isEmpty() const { return buffer_.empty(); }
    void give(Bytes::const_iterator begin, Bytes::const_iterator end) { buffer_.insert(buffer_.end(), begin, end); }
    void setOwnFlow(const std::optional<OwnFlow>& flow, bool obeysCts);

    /// Lets everything happen that happens until then.
    void runTo(Time now);
    /// When somebody has to look again, for what the control says or, if so wanted, for more room; Time::max() when
    /// nothing of that will happen.
    Time next(bool wantsRoom) const;
    /// What has arrived from the control and reached the chip's side of the bus by now.
    Bytes takeArrived(Time now, std::size_t most);
    /// CTS as the chip knows it by now, for a report to the computer.
    bool cts(Time now);
    /// When there is something to report that was not there at `now`.
    Time nextReport(Time now) const;

private:
    struct Character {
        Time at;
        std::uint8_t code;
    };

    Time nextAnswer() const;
    Time nextStep() const { return std::min(sends() ? sent_ : Time::max(), nextAnswer()); }
    bool sends() const { return !buffer_.empty() && !heldByChip_ && (cts_ || !obeysCts_); }
    void say(Time now, std::uint8_t code);
    void sendOne();
    void receiveOne();

    Control& control_;
    const Row row_;
    const std::size_t bufferSize_;
    const std::chrono::milliseconds toHost_;
    std::deque<std::uint8_t> buffer_;
    Time sent_{}; // when the first character of the buffer has reached the control
    std::deque<Character> answers_, arrived_;
    std::optional<OwnFlow> ownFlow_;
    bool obeysCts_ = false;
    bool heldByChip_ = false;
    bool cts_ = true;
    Time ctsKnown_{}; // when the chip knows of the last change
};
