// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/InputBuffer.h"

#include <algorithm>

namespace cncsim
{
bool InputBuffer::accept()
{
    if (isHeld()) {
        mostAfterXoff_ = std::max(mostAfterXoff_, ++afterXoff_);
        if (afterXoff_ > limits_.overrunRoom) {
            ++lostBytes_;
            return false;
        }
    }
    ++filled_;
    return true;
}

void InputBuffer::workOff(double seconds)
{
    if (limits_.readRate <= 0) {
        filled_ = 0;
        return;
    }
    credit_ += limits_.readRate * seconds;
    const auto count = std::min(filled_, static_cast<std::size_t>(credit_));
    filled_ -= count;
    // With nothing to read no credit is saved up: a control does not read ahead of the line.
    credit_ = filled_ == 0 ? 0 : credit_ - static_cast<double>(count);
}

InputBuffer::Signal InputBuffer::atMarks()
{
    if (!heldAtMark_ && filled_ >= limits_.highMark) {
        const bool wasHeld = isHeld();
        heldAtMark_ = true;
        if (wasHeld) return Signal::None;
        countXoff();
        return Signal::Xoff;
    }
    if (heldAtMark_ && filled_ <= limits_.lowMark) {
        heldAtMark_ = false;
        return heldByHand_ ? Signal::None : Signal::Xon;
    }
    return Signal::None;
}

bool InputBuffer::holdByHand(bool hold)
{
    const bool wasHeld = isHeld();
    heldByHand_ = hold;
    if (isHeld() && !wasHeld) countXoff();
    return isHeld() != wasHeld;
}

void InputBuffer::countXoff()
{
    ++xoffCount_;
    afterXoff_ = 0;
}
} // namespace cncsim
