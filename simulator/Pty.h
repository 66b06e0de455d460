// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <mutex>
#include <string>

namespace cncsim
{
/// The control's end of a pseudo-terminal. The other end is the serial device that the DNC program opens; it stays open
/// here as well, without any lock, so that the program may close and open it again without a hang-up. Only one thread
/// may read; the rest is for any.
class Pty
{
public:
    /// With `linkPath` the device can also be found under that name. Throws std::runtime_error.
    explicit Pty(const std::string& linkPath);
    ~Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    const std::string& devicePath() const { return devicePath_; }

    /// Waits up to `timeoutMs` for bytes and returns what has come, at most `limit` bytes.
    std::string read(std::size_t limit, int timeoutMs);
    /// Writes all bytes; waits up to a second for room, then drops the rest: nobody reads at the other end.
    void write(const std::string& bytes);
    /// Writes what the line takes now and returns how much that was.
    std::size_t writeSome(const std::string& bytes);
    /// Whether bytes that we wrote wait unread at the device.
    bool hasUnread() const;

private:
    void close();

    int master_ = -1;
    int slave_ = -1;
    std::mutex writing_;
    std::string devicePath_;
    std::string linkPath_;
};
} // namespace cncsim
