// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <unistd.h>

/// The last actions of a random run, told also when the program crashes or hangs: kept where a signal handler can read.
class ActionLog
{
public:
    ~ActionLog() { isOver_ = true; }

    void begin(int seed)
    {
        seed_ = seed;
        for (const int number : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE})
            std::signal(number, crashed);
        watch_ = std::jthread([](const std::stop_token& stop) {
            for (int before = -1, seconds = 0; !stop.stop_requested(); std::this_thread::sleep_for(tick)) {
                seconds = before == count_ ? seconds + 1 : 0;
                before = count_;
                if (seconds > longestAction && !isOver_) std::abort();
            }
        });
    }

    void note(const QString& text)
    {
        auto& line = lines_[static_cast<std::size_t>(count_) % lines_.size()];
        const QByteArray bytes = QByteArray::number(count_) + ' ' + text.toUtf8().left(lineSize - 20) + '\n';
        std::memset(line.data(), 0, line.size());
        std::memcpy(line.data(), bytes.constData(), static_cast<std::size_t>(bytes.size()));
        ++count_;
    }

    static void print()
    {
        std::array<char, 64> head{};
        std::snprintf(head.data(), head.size(), "seed %d, %d actions, the last:\n", seed_, count_.load());
        tell(head.data());
        for (std::size_t back = 0; back < lines_.size(); ++back)
            tell(lines_[(static_cast<std::size_t>(count_) + back) % lines_.size()].data());
    }

private:
    static constexpr int lineSize = 160;
    static constexpr std::chrono::seconds tick{1};
    static constexpr int longestAction = 90; // ticks: then it hangs

    static void tell(const char* text) { (void)!::write(STDERR_FILENO, text, std::strlen(text)); }

    static void crashed(int number)
    {
        std::signal(number, SIG_DFL);
        print();
        std::raise(number);
    }

    inline static std::array<std::array<char, lineSize>, 50> lines_{};
    inline static std::atomic<int> count_ = 0;
    inline static int seed_ = 0;
    inline static std::atomic<bool> isOver_ = false;
    std::jthread watch_;
};
