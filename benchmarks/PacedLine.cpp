// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/PacedLine.h"

#include "benchmarks/PacedUart.h"
#include "benchmarks/RealCall.h"

#include <atomic>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <memory>
#include <sys/ioctl.h>
#include <termios.h>
#include <thread>
#include <time.h>
#include <unistd.h>

namespace
{
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
        lines_[fd] = std::make_shared<PacedUart>(fd, chip_);
        if (!hasThread_) std::thread([this] { run(); }).detach();
        hasThread_ = true;
    }

    std::shared_ptr<PacedUart> find(int fd)
    {
        const std::lock_guard lock(mutex_);
        const auto found = lines_.find(fd);
        return found == lines_.end() ? nullptr : found->second;
    }

    std::shared_ptr<PacedUart> remove(int fd)
    {
        auto line = find(fd);
        const std::lock_guard lock(mutex_);
        lines_.erase(fd);
        return line;
    }

    void use(const PacedLine::Chip& chip)
    {
        const std::lock_guard lock(mutex_);
        chip_ = chip;
    }

    void passOnEvery(std::chrono::microseconds tick) { tick_ = tick; }
    double processorSeconds() const { return processorSeconds_; }

private:
    void run()
    {
        while (true) {
            std::this_thread::sleep_for(tick_.load());
            std::map<int, std::shared_ptr<PacedUart>> lines;
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
    std::map<int, std::shared_ptr<PacedUart>> lines_;
    std::optional<PacedLine::Chip> chip_; // of lines to come
    bool hasThread_ = false;
    std::atomic<std::chrono::microseconds> tick_ = std::chrono::microseconds(500);
    std::atomic<double> processorSeconds_ = 0;
};

int openLine(const char* name, const char* path, int flags, mode_t mode)
{
    const int fd = realCall<int (*)(const char*, int, ...)>(name)(path, flags, mode);
    // The control's side of a test has the device open too; only the program opens it without waiting.
    if (fd >= 0 && std::strncmp(path, "/dev/pts/", 9) == 0 && (flags & O_NONBLOCK)) Uarts::all().add(fd);
    return fd;
}
} // namespace

double PacedLine::processorSeconds()
{
    return Uarts::all().processorSeconds();
}

void PacedLine::use(const Chip& chip)
{
    Uarts::all().use(chip);
}

void PacedLine::passOnEvery(std::chrono::microseconds tick)
{
    Uarts::all().passOnEvery(tick);
}

PacedLine::Record PacedLine::record(int descriptor)
{
    const auto line = Uarts::all().find(descriptor);
    return line ? line->record() : Record{};
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

ssize_t read(int fd, void* bytes, std::size_t count)
{
    if (const auto line = Uarts::all().find(fd)) return line->read(static_cast<char*>(bytes), count);
    return realRead(fd, bytes, count);
}

ssize_t write(int fd, const void* bytes, std::size_t count)
{
    const auto line = Uarts::all().find(fd);
    if (!line || count == 0) return realWrite(fd, bytes, count);
    return line->write(static_cast<const char*>(bytes), count);
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
    return realCall<int (*)(int, unsigned long, void*)>("ioctl")(fd, request, argument);
}

int tcsetattr(int fd, int when, const termios* settings) noexcept
{
    const auto line = Uarts::all().find(fd);
    const auto taken = line ? line->withinReach(*settings) : *settings;
    const int result = realCall<int (*)(int, int, const termios*)>("tcsetattr")(fd, when, &taken);
    if (line) line->lineChanged();
    return result;
}

int tcflush(int fd, int queues) noexcept
{
    if (const auto line = Uarts::all().find(fd); line) {
        if (queues != TCIFLUSH) line->flushOutput();
        if (queues != TCOFLUSH) line->flushInput();
    }
    return realCall<int (*)(int, int)>("tcflush")(fd, queues);
}

int close(int fd)
{
    if (const auto line = Uarts::all().remove(fd)) line->end();
    return realCall<int (*)(int)>("close")(fd);
}
}
