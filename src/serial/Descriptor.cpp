// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/Descriptor.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <map>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace
{
// Devices that are shut but not closed yet: a write still holds them, or the driver is slow to close.
struct Releasing {
    std::mutex mutex;
    std::condition_variable changed;
    std::map<dev_t, int> count;
};

Releasing& releasing()
{
    static Releasing* const instance = new Releasing; // never destroyed: closing may outlast main()
    return *instance;
}
} // namespace

Descriptor::~Descriptor()
{
    ::ioctl(fd_, TIOCNXCL); // otherwise the device stays exclusive as long as anybody else has it open
    ::close(fd_);
    if (!shut_) return;
    auto& r = releasing();
    const std::lock_guard lock(r.mutex);
    if (--r.count[device_] == 0) r.count.erase(device_);
    r.changed.notify_all();
}

Descriptor::WriteResult Descriptor::write(const char* bytes, std::size_t count, std::size_t& taken)
{
    const std::lock_guard lock(mutex_);
    if (shut_) return WriteResult::Closed;
    const ssize_t written = ::write(fd_, bytes, count);
    if (written > 0) {
        taken += static_cast<std::size_t>(written);
        return WriteResult::Wrote;
    }
    if (written == 0 || errno == EAGAIN || errno == EINTR) return WriteResult::TryAgain;
    lost_ = lost_ || errno == EIO || errno == ENXIO || errno == ENODEV;
    return WriteResult::Failed;
}

void Descriptor::discardPending()
{
    const std::lock_guard lock(mutex_);
    if (!shut_) ::tcflush(fd_, TCOFLUSH);
}

bool Descriptor::isShut() const
{
    const std::lock_guard lock(mutex_);
    return shut_;
}

bool Descriptor::isLost() const
{
    const std::lock_guard lock(mutex_);
    pollfd device{fd_, 0, 0};
    return lost_ || (::poll(&device, 1, 0) == 1 && (device.revents & (POLLHUP | POLLERR)) != 0);
}

void Descriptor::shut(Pending pending)
{
    const std::lock_guard lock(mutex_);
    if (shut_) return;
    shut_ = true;
    if (pending == Pending::Discard) ::tcflush(fd_, TCOFLUSH);
    auto& r = releasing();
    const std::lock_guard releasingLock(r.mutex);
    ++r.count[device_];
}

bool Descriptor::waitUntilReleased(dev_t device, int ms)
{
    auto& r = releasing();
    std::unique_lock lock(r.mutex);
    return r.changed.wait_for(lock, std::chrono::milliseconds(ms), [&] { return r.count.count(device) == 0; });
}
