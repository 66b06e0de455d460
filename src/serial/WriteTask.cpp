// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/WriteTask.h"

#include "serial/serialPort.h"

#include <limits>
#include <thread>
#include <utility>

namespace
{
QByteArray withParity(QByteArray bytes)
{
    for (char& byte : bytes)
        byte = static_cast<char>(serialPort::SetParityBit(static_cast<std::uint8_t>(byte)));
    return bytes;
}
} // namespace

WriteTask::WriteTask(std::shared_ptr<LineTraffic> line, Stop stop, bool evenParity, const QByteArray& bytes)
    : line_(std::move(line)), stop_(std::move(stop)), bytes_(bytes), wireBytes_(evenParity ? withParity(bytes) : bytes)
{
}

WriteTask::Progress WriteTask::writePiece(LineTraffic& line)
{
    line.lookAtCts();
    line.look(); // before the stop is asked for: the XON of a stopped send must not let a piece of it out
    const std::lock_guard lock(mutex_);
    if (stop_->load() || abandoned_ || line.device().isShut()) return Progress::GivenUp;
    const auto size = static_cast<std::size_t>(wireBytes_.size());
    if (taken_ == size) return Progress::Done;
    switch (line.write(wireBytes_.constData() + taken_, size - taken_, taken_)) {
    case Descriptor::WriteResult::Wrote:
    case Descriptor::WriteResult::TryAgain:
        return taken_ == size ? Progress::Done : Progress::Wait;
    case Descriptor::WriteResult::Closed:
        return Progress::GivenUp;
    case Descriptor::WriteResult::Failed:
        break;
    }
    return Progress::Done;
}

bool WriteTask::run(const std::function<void()>& written)
{
    // Let go of here: the last one to hold the device closes it, and that must not be the main thread.
    const auto line = std::exchange(line_, nullptr);
    if (line && !writeAll(*line)) return false;
    if (!written) return true;
    written();
    if (line) std::this_thread::sleep_for(line->pause(std::numeric_limits<qsizetype>::max()));
    return true;
}

bool WriteTask::writeAll(LineTraffic& line)
{
    auto progress = writePiece(line);
    while (progress == Progress::Wait) {
        std::this_thread::sleep_for(line.pause(wireBytes_.size() - static_cast<qsizetype>(taken_)));
        progress = writePiece(line);
    }
    line.forgetCts();
    return progress == Progress::Done;
}

QByteArray WriteTask::abandon()
{
    const std::lock_guard lock(mutex_);
    abandoned_ = true;
    return bytes_.mid(static_cast<qsizetype>(taken_));
}

qsizetype WriteTask::unsentCount() const
{
    const std::lock_guard lock(mutex_);
    return bytes_.size() - static_cast<qsizetype>(taken_);
}
