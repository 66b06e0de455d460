// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/PacedUart.h"

#include "benchmarks/RealCall.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace
{
using Seconds = std::chrono::duration<double>;

constexpr std::size_t bufferSize = 4096; // of the kernel's serial core
constexpr std::chrono::seconds closingWait{30};
constexpr std::chrono::milliseconds closingLook{1};

struct Rate {
    speed_t code;
    double baud;
};
constexpr Rate rates[] = {{B150, 150},     {B300, 300},     {B600, 600},      {B1200, 1200},
                          {B2400, 2400},   {B4800, 4800},   {B9600, 9600},    {B19200, 19200},
                          {B38400, 38400}, {B57600, 57600}, {B115200, 115200}};
} // namespace

PacedUart::PacedUart(int fd, const std::optional<PacedLine::Chip>& chosen)
    : fd_(fd), keepsArrivals_(chosen.has_value()), chip_(chosen.value_or(PacedLine::Chip{}))
{
    lineChanged();
}

termios PacedUart::withinReach(const termios& settings) const
{
    termios taken = settings;
    termios before{};
    const auto speed = ::cfgetospeed(&settings);
    const auto isSpeed = [speed](const Rate& rate) { return rate.code == speed; };
    if (std::none_of(std::begin(rates), std::end(rates), isSpeed) && ::tcgetattr(fd_, &before) == 0) {
        ::cfsetospeed(&taken, ::cfgetospeed(&before));
        ::cfsetispeed(&taken, ::cfgetispeed(&before));
    }
    if (!chip_.hasRtsCts) taken.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS);
    return taken;
}

void PacedUart::lineChanged()
{
    termios line{};
    if (::tcgetattr(fd_, &line) != 0) return;
    const std::lock_guard lock(mutex_);
    const auto code = ::cfgetospeed(&line);
    for (const auto& rate : rates)
        if (rate.code == code) byteTime_ = Seconds(chip_.slowness * ((line.c_cflag & CSTOPB) ? 11 : 10) / rate.baud);
}

ssize_t PacedUart::write(const char* bytes, std::size_t count)
{
    const std::lock_guard lock(mutex_);
    const auto now = advance();
    if (!isOpen_) return realWrite(fd_, bytes, count);
    if (fifo_.empty()) free_ = now; // bytes that find the line idle start now
    const auto taken = std::min(count, bufferSize - buffer_.size());
    buffer_.append(bytes, taken);
    record_.now.taken += static_cast<long>(taken);
    refill();
    if (taken > 0) return static_cast<ssize_t>(taken);
    errno = EAGAIN; // the driver's buffer is full
    return -1;
}

void PacedUart::refill()
{
    const auto room = static_cast<std::size_t>(chip_.fifo) + 1 - fifo_.size(); // and one on the line
    const auto count = std::min(buffer_.size(), room);
    fifo_.append(buffer_, 0, count);
    buffer_.erase(0, count);
}

PacedUart::Clock::time_point PacedUart::advance()
{
    const auto now = Clock::now();
    while (isOpen_ && !fifo_.empty()) {
        const auto due = std::min(fifo_.size(), static_cast<std::size_t>((now - free_) / byteTime_));
        if (due == 0) break;
        const ssize_t written = realWrite(fd_, fifo_.data(), due);
        if (written <= 0) { // nobody reads at the other end: the line stands still
            free_ = now;
            if (errno != EAGAIN) isOpen_ = false; // it is gone
            break;
        }
        fifo_.erase(0, static_cast<std::size_t>(written));
        record_.now.carried += written;
        free_ += std::chrono::duration_cast<Clock::duration>(byteTime_ * static_cast<double>(written));
        refill();
    }
    return now;
}

void PacedUart::takeArrivals(Clock::time_point now)
{
    std::array<char, 1024> buffer;
    while ((readResult_ = realRead(fd_, buffer.data(), buffer.size())) > 0) {
        arrivals_.push_back({now + chip_.arrivalDelay, {buffer.data(), static_cast<std::size_t>(readResult_)}});
        record_.arrival = record_.now;
    }
    readError_ = errno;
}

std::size_t PacedUart::giveArrivals(Clock::time_point now, char* bytes, std::size_t count)
{
    std::size_t given = 0;
    while (given < count && !arrivals_.empty() && arrivals_.front().visible <= now) {
        auto& waiting = arrivals_.front().bytes;
        const auto size = waiting.copy(bytes + given, count - given);
        waiting.erase(0, size);
        if (waiting.empty()) arrivals_.pop_front();
        given += size;
    }
    return given;
}

ssize_t PacedUart::read(char* bytes, std::size_t count)
{
    if (!keepsArrivals_) return realRead(fd_, bytes, count);
    const std::lock_guard lock(mutex_);
    const auto now = advance();
    takeArrivals(now);
    ++record_.reads;
    const auto given = giveArrivals(now, bytes, count);
    if (given > 0) {
        record_.readBytes += static_cast<long>(given);
        record_.seen = record_.now;
        return static_cast<ssize_t>(given);
    }
    errno = arrivals_.empty() ? readError_ : EAGAIN;
    return arrivals_.empty() ? readResult_ : -1;
}

int PacedUart::pending()
{
    const std::lock_guard lock(mutex_);
    const auto now = advance();
    if (keepsArrivals_ && isOpen_) takeArrivals(now);
    return static_cast<int>(buffer_.size());
}

void PacedUart::flushOutput()
{
    const std::lock_guard lock(mutex_);
    buffer_.clear();
}

void PacedUart::flushInput()
{
    const std::lock_guard lock(mutex_);
    arrivals_.clear();
}

void PacedUart::end()
{
    const auto latest = Clock::now() + closingWait;
    for (std::unique_lock lock(mutex_); isOpen_; lock.lock()) {
        advance();
        isOpen_ = !fifo_.empty() && Clock::now() < latest;
        lock.unlock();
        std::this_thread::sleep_for(closingLook);
    }
}

PacedLine::Record PacedUart::record()
{
    const std::lock_guard lock(mutex_);
    advance();
    return record_;
}
