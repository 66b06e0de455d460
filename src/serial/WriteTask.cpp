// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/WriteTask.h"

#include "serial/CustomObject.h"
#include "serial/serialPort.h"

#include <algorithm>
#include <chrono>
#include <thread>

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

WriteTask::WriteTask(Line line, const QByteArray& bytes)
    : line_(std::move(line)), bytes_(bytes), wireBytes_(line_.evenParity ? withParity(bytes) : bytes)
{
}

// Sleeping for as long as the pending bytes take on the wire keeps a fast line busy; a fixed sleep would starve it.
void WriteTask::sleepFor(int pendingBytes) const
{
    const long long bits = (1 + 8 + line_.stopBits) * static_cast<long long>(pendingBytes);
    const microseconds wireTime{line_.speed > 0 ? bits * 1'000'000 / static_cast<long long>(line_.speed) : 0};
    std::this_thread::sleep_for(std::clamp(wireTime, shortestSleep, longestSleep));
}

WriteTask::Progress WriteTask::writeSome()
{
    const std::lock_guard lock(mutex_);
    if (abandoned_ || !line_.device) return abandoned_ ? Progress::Closed : Progress::Done;
    const auto size = static_cast<std::size_t>(wireBytes_.size());
    while (taken_ < size) {
        switch (line_.device->write(wireBytes_.constData() + taken_, size - taken_, taken_)) {
        case Descriptor::WriteResult::Wrote:
            break;
        case Descriptor::WriteResult::TryAgain:
            return Progress::Wait;
        case Descriptor::WriteResult::Closed:
            return Progress::Closed;
        case Descriptor::WriteResult::Failed:
            done_ = true;
            return Progress::Done;
        }
    }
    done_ = true;
    return Progress::Done;
}

bool WriteTask::run()
{
    const int fd = line_.device ? line_.device->get() : -1;
    for (int pending = CustomObject::bytesInTxBuffer(fd); pending >= 1; pending = CustomObject::bytesInTxBuffer(fd)) {
        sleepFor(pending);
        if (stopped()) return false;
    }
    while (true) {
        const Progress progress = writeSome();
        if (progress != Progress::Wait) return progress == Progress::Done;
        // The driver refuses for now: its buffer is full, or a line without a buffer of its own is held.
        const int pending = CustomObject::bytesInTxBuffer(fd);
        if (pending >= 1) {
            sleepFor(pending);
        } else {
            std::this_thread::sleep_for(longestSleep);
        }
        if (stopped()) return false;
    }
}

QByteArray WriteTask::abandon()
{
    const std::lock_guard lock(mutex_);
    abandoned_ = true;
    return done_ ? QByteArray() : bytes_.mid(static_cast<qsizetype>(taken_));
}
