// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

namespace cncsim
{
/// How full the control's input buffer is, and when it holds the line. Counts bytes; the bytes themselves are
/// kept elsewhere.
class InputBuffer
{
public:
    struct Limits {
        double readRate; ///< bytes a second; 0 is no limit
        std::size_t highMark;
        std::size_t lowMark;
        std::size_t overrunRoom;
    };
    enum class Signal { None, Xoff, Xon };

    explicit InputBuffer(Limits limits) : limits_(limits) {}

    /// One byte has arrived. False when it is lost: the line was held and the overrun room is used up.
    bool accept();
    /// The control has worked for that long.
    void workOff(double seconds);
    /// The signal that the marks ask for now; each is given once.
    Signal atMarks();
    /// Holds or releases the line by hand, whatever the marks say; true when that changes the line's state.
    bool holdByHand(bool hold);

    bool isEmpty() const { return filled_ == 0; }
    /// Bytes that fit before the high mark, at least 1.
    std::size_t room() const { return filled_ < limits_.highMark ? limits_.highMark - filled_ : 1; }
    std::size_t xoffCount() const { return xoffCount_; }
    std::size_t lostBytes() const { return lostBytes_; }
    std::size_t mostAfterXoff() const { return mostAfterXoff_; }

private:
    bool isHeld() const { return heldAtMark_ || heldByHand_; }
    void countXoff();

    Limits limits_;
    std::size_t filled_ = 0;
    double credit_ = 0; // bytes that may be worked off by now
    bool heldAtMark_ = false;
    bool heldByHand_ = false;
    std::size_t xoffCount_ = 0;
    std::size_t afterXoff_ = 0;
    std::size_t mostAfterXoff_ = 0;
    std::size_t lostBytes_ = 0;
};
} // namespace cncsim
