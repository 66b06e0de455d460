// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serial/Descriptor.h"
#include "serial/HoldTimes.h"
#include "serial/LineClock.h"
#include "serial/SoftwareFlow.h"

#include <QByteArray>

#include <memory>
#include <mutex>
#include <optional>

/// What goes over one open line in both directions, shared by the port and its writes. Holds the line itself, whatever
/// the driver does: each write looks first at what has arrived, and never hands over more than a few characters that
/// may still reach the control after its stop. Any thread.
class LineTraffic
{
public:
    using Time = SoftwareFlow::Time;

    struct Line {
        unsigned long speed = 0; ///< baud
        int stopBits = 1;
        bool stripsParity = false; ///< bit 7 of what arrives is cleared here, because the line can't
        int flow = 0;              ///< as serialPort::FlowType
    };

    LineTraffic(std::shared_ptr<Descriptor> device, const Line& line);

    /// Flow control as serialPort::FlowType. On a line that `watches`, XON and XOFF count without it, too, and are left
    /// in what arrives: the control's start signal is XON.
    void setFlow(int flow, bool watches);
    /// Reads what has arrived. Without a write under way this has to be called often enough for the driver's buffer.
    void look();
    /// Asks for CTS where flow control goes by it. Can take as long as an adapter takes to answer: not on the main
    /// thread, and not while anything is locked.
    void lookAtCts();
    /// Nobody writes any more, so nobody looks at CTS.
    void forgetCts();
    /// What has arrived since the last call and is not flow control.
    QByteArray takeArrived();

    /// Hands over as many of the bytes as may be on their way now, which may be none; adds their number to `taken`. To
    /// be called right after lookAtCts() and look().
    Descriptor::WriteResult write(const char* bytes, std::size_t count, std::size_t& taken);
    /// How long to sleep before the next write of a task that has that many bytes left.
    LineClock::Duration pause(qsizetype left) const;

    /// Since when the control has held the line, by XOFF or by CTS.
    std::optional<Time> heldSince() const;
    /// Ends a hold by XOFF if it has lasted at least that long.
    void release(std::chrono::milliseconds age);

    /// How long the control has held the line since the last restart.
    HoldTimes::Sum holdTimes() const;
    void restartHoldTimes();

    Descriptor& device() const { return *device_; }

private:
    void applyFlow(int flow, bool watches);
    void readLocked();
    qsizetype room(Time now) const;
    void noteHold();

    const std::shared_ptr<Descriptor> device_;
    const bool stripsParity_;
    mutable std::mutex mutex_; // what arrives has to be read and judged in order
    SoftwareFlow flow_;
    LineClock clock_;
    bool obeysCts_ = false;
    bool hasSeenCts_ = false; // some drivers report it only later, or never: until then it holds nothing here
    bool isRefused_ = false;  // there was room, and the driver took nothing
    std::optional<Time> ctsOffSince_;
    HoldTimes holdTimes_;
    QByteArray arrived_;
};
