// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/BenchLine.h"

#include <QEventLoop>
#include <QTimer>

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

BenchLine::BenchLine(std::chrono::milliseconds rest)
    : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)), rest_(rest)
{
    if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) qFatal("no pseudo-terminal");
    path_ = QString::fromLocal8Bit(::ptsname(master_));
    slave_ = ::open(::ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC);
    reader_ = std::thread([this] { read(); });
}

BenchLine::~BenchLine()
{
    ended_ = true;
    reader_.join();
    ::close(slave_);
    ::close(master_);
}

void BenchLine::read()
{
    std::array<char, 65536> buffer;
    for (; !ended_; std::this_thread::sleep_for(rest_)) {
        pollfd ready{master_, POLLIN, 0};
        if (::poll(&ready, 1, 20) <= 0) continue;
        const auto count = ::read(master_, buffer.data(), buffer.size());
        if (count <= 0) continue;
        const std::lock_guard lock(mutex_);
        mark_ = {mark_.bytes + count, std::chrono::steady_clock::now()};
        timespec used{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
        processorSeconds_ = static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
    }
}

BenchLine::Mark BenchLine::mark() const
{
    const std::lock_guard lock(mutex_);
    return mark_;
}

void BenchLine::write(char byte)
{
    if (::write(master_, &byte, 1) != 1) qFatal("the line takes no byte");
}

QByteArray Bench::program(int blocks, int characters)
{
    const int text = characters - 2; // the editor's line feed becomes CR LF
    QByteArray program;
    program.reserve(static_cast<qsizetype>(blocks) * (text + 1));
    for (int block = 0; block < blocks; ++block) {
        const QByteArray number = "N" + QByteArray::number(block % 100'000) + " G1 X-123.456 Y78.901 Z-2.5 F1200";
        program += number.leftJustified(text, '0', true) + '\n';
    }
    return program;
}

double Bench::processorSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void Bench::runFor(double seconds)
{
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(seconds * 1000), Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}
