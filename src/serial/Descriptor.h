// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <mutex>
#include <sys/types.h>

/// An open serial device. The port and each of its writes share it, so its descriptor number cannot be reused for
/// another device while one of them still knows it; the device is closed when the last of them lets go. Any thread.
class Descriptor
{
public:
    Descriptor(int fd, dev_t device) : fd_(fd), device_(device) {}
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }

    enum class WriteResult { Wrote, TryAgain, Failed, Closed };
    /// Writes what the driver takes now, without waiting; adds the number of bytes taken to `taken`.
    WriteResult write(const char* bytes, std::size_t count, std::size_t& taken);

    /// Drops what the driver has not sent yet.
    void discardPending();

    bool isShut() const;
    /// The device is gone: the driver has hung up, or a write failed for that reason.
    bool isLost() const;

    /// What becomes of the driver's pending output.
    enum class Pending { Send, Discard };
    /// From here on nothing is written.
    void shut(Pending pending);

    /// Waits until every shut descriptor of this device has been closed. False if that takes longer than `ms`.
    static bool waitUntilReleased(dev_t device, int ms);

private:
    mutable std::mutex mutex_;
    const int fd_;
    const dev_t device_;
    bool shut_ = false;
    bool lost_ = false; // as a write found
};
