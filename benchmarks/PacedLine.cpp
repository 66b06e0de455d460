// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/PacedLine.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <sys/ioctl.h>
#include <termios.h>
#include <thread>
#include <time.h>
#include <unistd.h>

namespace
{
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr std::size_t bufferSize = 4096; // of the kernel's serial core
constexpr std::chrono::seconds closingWait{30};
constexpr std::chrono::microseconds tick{500};

template <typename Function> Function original(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

ssize_t realWrite(int fd, const void* bytes, std::size_t count)
{
    static const auto function = original<ssize_t (*)(int, const void*, std::size_t)>("write");
    return function(fd, bytes, count);
}

struct Rate {
    speed_t code;
    double baud;
};
constexpr Rate rates[] = {{B150, 150},     {B300, 300},     {B600, 600},      {B1200, 1200},
                          {B2400, 2400},   {B4800, 4800},   {B9600, 9600},    {B19200, 19200},
                          {B38400, 38400}, {B57600, 57600}, {B115200, 115200}};

bool isWithinReach(speed_t code)
{
    return std::any_of(std::begin(rates), std::end(rates), [code](const Rate& rate) { return rate.code == code; });
}

class Uart
{
public:
    explicit Uart(int fd) : fd_(fd) { lineChanged(); }

    void lineChanged()
    {
        termios line{};
        if (::tcgetattr(fd_, &line) != 0) return;
        const std::lock_guard lock(mutex_);
        const auto code = ::cfgetospeed(&line);
        for (const auto& rate : rates)
            if (rate.code == code) byteTime_ = Seconds(((line.c_cflag & CSTOPB) ? 11 : 10) / rate.baud);
    }

    /// How many of the bytes the driver takes; 0 when its buffer is full.
    std::size_t queue(const char* bytes, std::size_t count)
    {
        const std::lock_guard lock(mutex_);
        advance();
        const auto taken = std::min(count, bufferSize - buffer_.size());
        buffer_.append(bytes, taken);
        advance();
        return taken;
    }

    int pending()
    {
        const std::lock_guard lock(mutex_);
        advance();
        return static_cast<int>(buffer_.size());
    }

    void flush()
    {
        const std::lock_guard lock(mutex_);
        buffer_.clear();
    }

    void drain()
    {
        const auto end = Clock::now() + closingWait;
        while (pending() > 0 && Clock::now() < end)
            std::this_thread::sleep_for(tick);
    }

private:
    // Makes every refill of the FIFO that is due, even when called late.
    void advance()
    {
        const auto now = Clock::now();
        while (!buffer_.empty() && fifoEmpty_ <= now) {
            const auto count = std::min<std::size_t>(buffer_.size(), PacedLine::fifoSize);
            const ssize_t written = realWrite(fd_, buffer_.data(), count);
            if (written <= 0) { // held: the line is idle until it is released
                fifoEmpty_ = now;
                return;
            }
            buffer_.erase(0, static_cast<std::size_t>(written));
            const auto time = std::chrono::duration_cast<Clock::duration>(byteTime_ * static_cast<double>(written));
            // Bytes that found the line idle start now; those that waited start when the last ones ended.
            fifoEmpty_ = (isIdle_ ? now : fifoEmpty_) + time;
            isIdle_ = false;
        }
        if (buffer_.empty() && fifoEmpty_ <= now) isIdle_ = true;
    }

    const int fd_;
    std::mutex mutex_;
    std::string buffer_;
    Clock::time_point fifoEmpty_ = Clock::now();
    bool isIdle_ = true;
    Seconds byteTime_{10 / 9600.0};
};

class Uarts
{
public:
    static Uarts& all()
    {
        static Uarts* const instance = new Uarts; // never destroyed: the program may close lines while it ends
        return *instance;
    }

    void add(int fd)
    {
        const std::lock_guard lock(mutex_);
        lines_[fd] = std::make_shared<Uart>(fd);
        if (!hasThread_) std::thread([this] { run(); }).detach();
        hasThread_ = true;
    }

    std::shared_ptr<Uart> find(int fd)
    {
        const std::lock_guard lock(mutex_);
        const auto found = lines_.find(fd);
        return found == lines_.end() ? nullptr : found->second;
    }

    std::shared_ptr<Uart> remove(int fd)
    {
        auto line = find(fd);
        const std::lock_guard lock(mutex_);
        lines_.erase(fd);
        return line;
    }

    double processorSeconds() const { return processorSeconds_; }

private:
    void run()
    {
        while (true) {
            std::this_thread::sleep_for(tick);
            std::map<int, std::shared_ptr<Uart>> lines;
            {
                const std::lock_guard lock(mutex_);
                lines = lines_;
            }
            for (const auto& [fd, line] : lines)
                line->pending();
            timespec used{};
            ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
            processorSeconds_ = static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
        }
    }

    std::mutex mutex_;
    std::map<int, std::shared_ptr<Uart>> lines_;
    bool hasThread_ = false;
    std::atomic<double> processorSeconds_ = 0;
};

int openLine(const char* name, const char* path, int flags, mode_t mode)
{
    const int fd = original<int (*)(const char*, int, ...)>(name)(path, flags, mode);
    // The control's side of a test has the device open too; only the program opens it without waiting.
    if (fd >= 0 && std::strncmp(path, "/dev/pts/", 9) == 0 && (flags & O_NONBLOCK)) Uarts::all().add(fd);
    return fd;
}
} // namespace

double PacedLine::processorSeconds()
{
    return Uarts::all().processorSeconds();
}

extern "C" {
int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = static_cast<mode_t>((flags & O_CREAT) ? va_arg(arguments, unsigned) : 0);
    va_end(arguments);
    return openLine("open", path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const auto mode = static_cast<mode_t>((flags & O_CREAT) ? va_arg(arguments, unsigned) : 0);
    va_end(arguments);
    return openLine("open64", path, flags, mode);
}

ssize_t write(int fd, const void* bytes, std::size_t count)
{
    const auto line = Uarts::all().find(fd);
    if (!line || count == 0) return realWrite(fd, bytes, count);
    const auto taken = line->queue(static_cast<const char*>(bytes), count);
    if (taken > 0) return static_cast<ssize_t>(taken);
    errno = EAGAIN;
    return -1;
}

int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request == TIOCOUTQ) {
        if (const auto line = Uarts::all().find(fd)) {
            *static_cast<int*>(argument) = line->pending();
            return 0;
        }
    }
    return original<int (*)(int, unsigned long, void*)>("ioctl")(fd, request, argument);
}

int tcsetattr(int fd, int when, const termios* settings) noexcept
{
    termios taken = *settings;
    termios before{};
    // As serial drivers do: a speed beyond the chip's reach leaves the old one and is no error.
    if (Uarts::all().find(fd) && !isWithinReach(::cfgetospeed(settings)) && ::tcgetattr(fd, &before) == 0) {
        ::cfsetospeed(&taken, ::cfgetospeed(&before));
        ::cfsetispeed(&taken, ::cfgetispeed(&before));
    }
    const int result = original<int (*)(int, int, const termios*)>("tcsetattr")(fd, when, &taken);
    if (const auto line = Uarts::all().find(fd)) line->lineChanged();
    return result;
}

int tcflush(int fd, int queues) noexcept
{
    if (const auto line = Uarts::all().find(fd); line && queues != TCIFLUSH) line->flush();
    return original<int (*)(int, int)>("tcflush")(fd, queues);
}

int close(int fd)
{
    if (const auto line = Uarts::all().remove(fd)) {
        line->drain();
        line->flush(); // from here on the number is no longer ours
    }
    return original<int (*)(int)>("close")(fd);
}
}
