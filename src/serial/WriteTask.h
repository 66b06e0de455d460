// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serial/LineTraffic.h"

#include <QByteArray>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

/// One array of bytes on its way to the driver. Created on the main thread and run on a background thread. Counts what
/// the driver has taken, so that a send that was stopped halfway can go on without losing or repeating a byte.
class WriteTask
{
public:
    /// The operator's Stop button.
    using Stop = std::shared_ptr<const std::atomic<bool>>;

    /// Without a line the bytes go nowhere and count as written.
    WriteTask(std::shared_ptr<LineTraffic> line, Stop stop, bool evenParity, const QByteArray& bytes);

    /// To be called once: hands all bytes over as fast as the line carries them and the control lets them come, and
    /// lets go of the line. False when stopped or abandoned, or when the device was shut. An error of the device counts
    /// as success, because nobody could act on it. Reports success through `written` as well, and then waits some
    /// milliseconds, until the line has room for the next array: a thread that found none would sleep at once again.
    bool run(const std::function<void()>& written = {});

    /// From here on nothing more is written. Returns the bytes that the driver did not take, without parity. Any
    /// thread.
    QByteArray abandon();
    /// How many bytes the driver has not taken. Any thread; final once the operator's Stop is set.
    qsizetype unsentCount() const;

private:
    enum class Progress { Done, GivenUp, Wait };
    bool writeAll(LineTraffic& line);
    Progress writePiece(LineTraffic& line);

    std::shared_ptr<LineTraffic> line_; // run() takes it out
    const Stop stop_;
    const QByteArray bytes_;     // as given
    const QByteArray wireBytes_; // with parity
    mutable std::mutex mutex_;   // a piece is written and counted in one step
    std::size_t taken_ = 0;
    std::atomic<bool> abandoned_ = false;
};
