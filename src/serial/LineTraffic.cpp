// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/LineTraffic.h"

#include "serial/CustomObject.h"
#include "serial/ModemLines.h"

#include <algorithm>
#include <array>
#include <unistd.h>
#include <utility>

namespace
{
using namespace std::chrono_literals;
constexpr std::size_t readSize = 1024;
constexpr int mostReads = 64;                        // of one look: a flood must not hold up the window
constexpr LineClock::Duration shortestPause = 200us; // between looks at a fast line
constexpr LineClock::Duration heldPause = 2ms;       // an XON is seen that much late at most
constexpr LineClock::Duration longestPause = 10ms;   // a stop has to be seen soon on a slow line
} // namespace

LineTraffic::LineTraffic(std::shared_ptr<Descriptor> device, const Line& line)
    : device_(std::move(device)), stripsParity_(line.stripsParity), clock_(line.speed, 1 + 8 + line.stopBits)
{
    applyFlow(line.flow, false);
}

void LineTraffic::setFlow(int flow, bool watches)
{
    const std::lock_guard lock(mutex_);
    readLocked(); // what came before counts as it did then: an old XON is no start signal
    applyFlow(flow, watches);
}

void LineTraffic::applyFlow(int flow, bool watches)
{
    flow_.setMode(flow == 1 ? SoftwareFlow::Mode::Obey : watches ? SoftwareFlow::Mode::Watch : SoftwareFlow::Mode::Off);
    obeysCts_ = flow == 2;
    if (!obeysCts_) ctsOffSince_.reset();
    noteHold();
}

void LineTraffic::look()
{
    const std::lock_guard lock(mutex_);
    readLocked();
}

void LineTraffic::readLocked()
{
    std::array<char, readSize> buffer;
    for (int reads = 0; reads < mostReads; ++reads) {
        const ssize_t count = ::read(device_->get(), buffer.data(), buffer.size());
        if (count < 1) return; // nothing, or a device that is gone: whoever writes or polls next will see
        if (stripsParity_)
            std::for_each(buffer.begin(), buffer.begin() + count,
                          [](char& byte) { byte = static_cast<char>(byte & 0x7F); });
        arrived_ += flow_.take({buffer.data(), static_cast<qsizetype>(count)}, std::chrono::steady_clock::now());
        noteHold();
        if (static_cast<std::size_t>(count) < readSize) return;
    }
}

QByteArray LineTraffic::takeArrived()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(arrived_, {});
}

// The driver obeys CTS as well, but what it has handed to the chip by then is out of its hands.
void LineTraffic::lookAtCts()
{
    {
        const std::lock_guard lock(mutex_);
        if (!obeysCts_) return;
    }
    const auto lines = ModemLines::read(device_->get());
    if (!lines) return;
    const bool isOn = lines->cts;
    const std::lock_guard lock(mutex_);
    hasSeenCts_ = hasSeenCts_ || isOn;
    if (isOn || !hasSeenCts_ || !obeysCts_)
        ctsOffSince_.reset();
    else if (!ctsOffSince_)
        ctsOffSince_ = std::chrono::steady_clock::now();
    noteHold();
}

void LineTraffic::forgetCts()
{
    const std::lock_guard lock(mutex_);
    ctsOffSince_.reset();
    noteHold();
}

// A line that the driver itself holds has no room either, whatever the clock says.
qsizetype LineTraffic::room(Time now) const
{
    const qsizetype room = clock_.room(now);
    if (room == 0) return 0;
    return std::min<qsizetype>(room, clock_.mostAhead() - CustomObject::bytesInTxBuffer(device_->get()));
}

Descriptor::WriteResult LineTraffic::write(const char* bytes, std::size_t count, std::size_t& taken)
{
    const std::lock_guard lock(mutex_);
    isRefused_ = false;
    if (flow_.isHeld() || ctsOffSince_)
        return device_->isLost() ? Descriptor::WriteResult::Failed : Descriptor::WriteResult::TryAgain;
    const auto room = this->room(std::chrono::steady_clock::now());
    if (room < 1) return Descriptor::WriteResult::TryAgain;
    const auto before = taken;
    const auto result = device_->write(bytes, std::min(count, static_cast<std::size_t>(room)), taken);
    // The time after the write: a process that slept before it would have room for more at once.
    clock_.wrote(std::chrono::steady_clock::now(), static_cast<qsizetype>(taken - before));
    isRefused_ = taken == before;
    return result;
}

LineClock::Duration LineTraffic::pause(qsizetype left) const
{
    const std::lock_guard lock(mutex_);
    if (flow_.isHeld() || ctsOffSince_ || isRefused_) return heldPause;
    return std::clamp(clock_.untilRoom(std::chrono::steady_clock::now(), left), shortestPause, longestPause);
}

std::optional<LineTraffic::Time> LineTraffic::heldSince() const
{
    const std::lock_guard lock(mutex_);
    return flow_.isHeld() ? flow_.heldSince() : ctsOffSince_;
}

void LineTraffic::release(std::chrono::milliseconds age)
{
    const std::lock_guard lock(mutex_);
    const auto since = flow_.heldSince();
    if (since && std::chrono::steady_clock::now() - *since >= age) flow_.release();
    noteHold();
}

void LineTraffic::noteHold()
{
    holdTimes_.note(flow_.isHeld() || ctsOffSince_, std::chrono::steady_clock::now());
}

HoldTimes::Sum LineTraffic::holdTimes() const
{
    const std::lock_guard lock(mutex_);
    return holdTimes_.sum(std::chrono::steady_clock::now());
}

void LineTraffic::restartHoldTimes()
{
    const std::lock_guard lock(mutex_);
    holdTimes_.restart(std::chrono::steady_clock::now());
}
