// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serial/Descriptor.h"

#include <QByteArray>

#include <atomic>
#include <memory>
#include <mutex>

/// One array of bytes on its way to the driver. Made on the main thread, run on a background thread; keeps count of
/// what the driver took, so that a send that was stopped half-way can be continued without losing or doubling a byte.
class WriteTask
{
public:
    struct Line {
        std::shared_ptr<Descriptor> device;
        std::shared_ptr<const std::atomic<bool>> stop; ///< the operator's Stop button
        unsigned long speed = 0;                       ///< baud
        int stopBits = 1;
        bool evenParity = false;
    };

    WriteTask(Line line, const QByteArray& bytes);

    /// Waits until the driver has sent everything before, then writes all bytes. False when stopped, abandoned, or the
    /// device was closed. An error of the device counts as done: nobody could act on it here.
    bool run();

    /// From here on nothing more is written. Returns the bytes that the driver did not take, without parity.
    QByteArray abandon();

private:
    enum class Progress { Done, Wait, Closed };
    Progress writeSome();
    bool stopped() const { return line_.stop->load() || abandoned_.load(); }
    void sleepFor(int pendingBytes) const;

    const Line line_;
    const QByteArray bytes_;     // as given
    const QByteArray wireBytes_; // with parity
    std::mutex mutex_;           // held while a piece is written and counted
    std::size_t taken_ = 0;
    bool done_ = false;
    std::atomic<bool> abandoned_ = false;
};
