// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/Pty.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace cncsim
{
namespace
{
constexpr int writeTimeoutMs = 1000;

// A link that an earlier run left is replaced; anything else under that name stays.
bool makeLink(const std::string& device, const std::string& link)
{
    struct stat found {
    };
    if (::lstat(link.c_str(), &found) == 0 && S_ISLNK(found.st_mode)) ::unlink(link.c_str());
    return ::symlink(device.c_str(), link.c_str()) == 0;
}
} // namespace

Pty::Pty(const std::string& linkPath)
{
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    const bool isReady = master_ >= 0 && ::grantpt(master_) == 0 && ::unlockpt(master_) == 0;
    const char* const name = isReady ? ::ptsname(master_) : nullptr;
    if (name) devicePath_ = name;
    if (name) slave_ = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave_ < 0) {
        close();
        throw std::runtime_error("no pseudo-terminal");
    }
    termios line{};
    ::tcgetattr(slave_, &line);
    line.c_lflag = 0; // as on a line that nobody has opened, no echo comes back; the rest is for the program to set up
    ::tcsetattr(slave_, TCSANOW, &line);
    ::fcntl(master_, F_SETFL, O_NONBLOCK);
    if (linkPath.empty()) return;
    if (!makeLink(devicePath_, linkPath)) {
        close();
        throw std::runtime_error("cannot link " + linkPath + " to the device");
    }
    linkPath_ = linkPath;
}

Pty::~Pty()
{
    close();
}

void Pty::close()
{
    if (!linkPath_.empty()) ::unlink(linkPath_.c_str());
    if (slave_ >= 0) ::close(slave_);
    if (master_ >= 0) ::close(master_);
}

std::string Pty::read(std::size_t limit, int timeoutMs)
{
    pollfd ready{master_, POLLIN, 0};
    if (::poll(&ready, 1, timeoutMs) <= 0) return {};
    std::array<char, 4096> buffer;
    const auto count = ::read(master_, buffer.data(), std::min(limit, buffer.size()));
    return count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : std::string();
}

void Pty::write(const std::string& bytes)
{
    const std::lock_guard lock(writing_);
    std::size_t written = 0;
    while (written < bytes.size()) {
        const auto count = ::write(master_, bytes.data() + written, bytes.size() - written);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
            continue;
        }
        pollfd room{master_, POLLOUT, 0};
        if (::poll(&room, 1, writeTimeoutMs) <= 0) return;
    }
}

std::size_t Pty::writeSome(const std::string& bytes)
{
    const std::lock_guard lock(writing_);
    const auto count = ::write(master_, bytes.data(), bytes.size());
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool Pty::hasUnread() const
{
    int count = 0;
    return ::ioctl(slave_, FIONREAD, &count) == 0 && count > 0;
}
} // namespace cncsim
