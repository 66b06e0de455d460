// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>

/// The control's side of a line, for benchmarks: takes everything at once, on a thread of its own, and records when
/// bytes came.
class BenchLine
{
public:
    struct Mark {
        std::int64_t bytes = 0;
        std::chrono::steady_clock::time_point time;
    };

    /// Rests that long after each read: the readers of many lines would take the processor from the program.
    explicit BenchLine(std::chrono::milliseconds rest = std::chrono::milliseconds::zero());
    ~BenchLine();
    BenchLine(const BenchLine&) = delete;
    BenchLine& operator=(const BenchLine&) = delete;

    QString devicePath() const { return path_; }
    /// All bytes so far and when the last of them came.
    Mark mark() const;
    void write(char byte);
    /// Processor time that reading has used, in seconds.
    double processorSeconds() const { return processorSeconds_; }

private:
    void read();

    int master_;
    int slave_ = -1; // keeps the device alive, so that the reader sees no hang-up
    QString path_;
    mutable std::mutex mutex_;
    Mark mark_;
    std::atomic<double> processorSeconds_ = 0;
    std::atomic<bool> ended_ = false;
    const std::chrono::milliseconds rest_;
    std::thread reader_;
};

namespace Bench
{
/// A program of that many blocks, each with that many characters on the wire, CR LF included.
QByteArray program(int blocks, int characters);

/// Processor time of this process so far, in seconds.
double processorSeconds();

/// Runs the event loop for that long.
void runFor(double seconds);
} // namespace Bench
