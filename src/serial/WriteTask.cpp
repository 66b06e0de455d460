// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/WriteTask.h"

#include "serial/CustomObject.h"
#include "serial/serialPort.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace
{
using std::chrono::microseconds;
constexpr microseconds longestSleep{10000};
constexpr microseconds shortestSleep{200};

QByteArray withParity(QByteArray bytes)
{
    for (char& byte : bytes)
        byte = static_cast<char>(serialPort::SetParityBit(static_cast<std::uint8_t>(byte)));
    return bytes;
}
} // namespace

WriteTask::WriteTask(std::shared_ptr<Descriptor> device, Line line, const QByteArray& bytes)
    : device_(std::move(device)), line_(std::move(line)), bytes_(bytes),
      wireBytes_(line_.evenParity ? withParity(bytes) : bytes)
{
}

bool WriteTask::isGivenUp(const Descriptor& device) const
{
    return line_.stop->load() || abandoned_ || device.isShut();
}

// Sleeps only as long as the pending bytes need on the wire: a fixed sleep would leave a fast line idle.
void WriteTask::sleepFor(int pendingBytes) const
{
    auto time = longestSleep;
    if (pendingBytes > 0 && line_.speed > 0) {
        const long long bits = (1 + 8 + line_.stopBits) * static_cast<long long>(pendingBytes);
        const microseconds wireTime{bits * 1'000'000 / static_cast<long long>(line_.speed)};
        time = std::clamp(wireTime, shortestSleep, longestSleep);
    }
    std::this_thread::sleep_for(time);
}

WriteTask::Progress WriteTask::writeOnce(Descriptor& device)
{
    const std::lock_guard lock(mutex_);
    if (isGivenUp(device)) return Progress::GivenUp;
    const auto left = static_cast<std::size_t>(wireBytes_.size()) - taken_;
    const auto result =
        left > 0 ? device.write(wireBytes_.constData() + taken_, left, taken_) : Descriptor::WriteResult::Wrote;
    switch (result) {
    case Descriptor::WriteResult::Wrote:
        return taken_ == static_cast<std::size_t>(wireBytes_.size()) ? Progress::Done : Progress::More;
    case Descriptor::WriteResult::TryAgain:
        return Progress::Wait;
    case Descriptor::WriteResult::Closed:
        return Progress::GivenUp;
    case Descriptor::WriteResult::Failed:
        break;
    }
    return Progress::Done;
}

bool WriteTask::run()
{
    // Released on this thread: whoever holds the device last closes it, and that must not be the main thread.
    const auto device = std::exchange(device_, nullptr);
    if (!device) return true;
    while (const int pending = CustomObject::bytesInTxBuffer(device->get())) {
        sleepFor(pending);
        if (isGivenUp(*device)) return false;
    }
    auto progress = writeOnce(*device);
    while (progress == Progress::More || progress == Progress::Wait) {
        // Refused for now: the driver's buffer is full, or the line has none and the control holds it.
        if (progress == Progress::Wait) sleepFor(CustomObject::bytesInTxBuffer(device->get()));
        progress = writeOnce(*device);
    }
    return progress == Progress::Done;
}

QByteArray WriteTask::abandon()
{
    const std::lock_guard lock(mutex_);
    abandoned_ = true;
    return bytes_.mid(static_cast<qsizetype>(taken_));
}
