// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serial/Descriptor.h"

#include <QByteArray>

#include <atomic>
#include <memory>
#include <mutex>

/// One array of bytes on its way to the driver. Created on the main thread and run on a background thread. Counts what
/// the driver has taken, so that a send that was stopped halfway can go on without losing or repeating a byte.
class WriteTask
{
public:
    struct Line {
        std::shared_ptr<const std::atomic<bool>> stop; ///< the operator's Stop button
        unsigned long speed = 0;                       ///< baud
        int stopBits = 1;
        bool evenParity = false;
    };

    /// Without a device the bytes go nowhere and count as written.
    WriteTask(std::shared_ptr<Descriptor> device, Line line, const QByteArray& bytes);

    /// To be called once: waits until the driver has sent everything before, writes all bytes and lets go of the
    /// device. False when stopped or abandoned, or when the device was shut. An error of the device counts as success,
    /// because nobody could act on it.
    bool run();

    /// From here on nothing more is written. Returns the bytes that the driver did not take, without parity. Any
    /// thread.
    QByteArray abandon();

private:
    enum class Progress { Done, GivenUp, More, Wait };
    Progress writeOnce(Descriptor& device);
    bool isGivenUp(const Descriptor& device) const;
    void sleepFor(int pendingBytes) const;

    std::shared_ptr<Descriptor> device_; // run() takes it out
    const Line line_;
    const QByteArray bytes_;     // as given
    const QByteArray wireBytes_; // with parity
    std::mutex mutex_;           // a piece is written and counted in one step
    std::size_t taken_ = 0;
    std::atomic<bool> abandoned_ = false;
};
