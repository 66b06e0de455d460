// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/PacedCable.h"

#include <algorithm>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>
#include <utility>

namespace
{
using namespace std::chrono_literals;
// Characters are handed over in groups of that much time, as a receiver's buffer does. The last one is never late.
constexpr PacedCable::Clock::duration longestGroup = 1ms;
constexpr PacedCable::Clock::duration longestSleep = 10ms;
} // namespace

PacedCable::PacedCable(End one, End other, int baud)
    : characterTime_(std::chrono::nanoseconds(10'000'000'000LL / baud)), ways_{Way{one.out, other.in},
                                                                               Way{other.out, one.in}},
      thread_([this](const std::stop_token& stop) { run(stop); })
{
}

void PacedCable::run(const std::stop_token& stop)
{
    ::prctl(PR_SET_TIMERSLACK, 1); // ns
    std::array<pollfd, 2> ends{pollfd{ways_[0].from, POLLIN, 0}, pollfd{ways_[1].from, POLLIN, 0}};
    while (!stop.stop_requested()) {
        const auto sleep = std::clamp<Clock::duration>(nextDelivery() - Clock::now(), 0ms, longestSleep);
        const timespec timeout{0, static_cast<long>(std::chrono::nanoseconds(sleep).count())};
        ::ppoll(ends.data(), ends.size(), &timeout, nullptr);
        for (std::size_t way = 0; way < ends.size(); ++way) {
            if (ends[way].revents & POLLIN) take(ways_[way]);
            give(ways_[way]);
        }
    }
}

void PacedCable::take(Way& way) const
{
    std::array<char, 4096> buffer;
    const ssize_t count = ::read(way.from, buffer.data(), buffer.size());
    way.free = std::max(way.free, Clock::now());
    for (ssize_t at = 0; at < count; ++at) {
        way.free += characterTime_;
        way.onTheWay.push_back({buffer[static_cast<std::size_t>(at)], way.free});
    }
}

void PacedCable::give(Way& way)
{
    std::string due;
    const auto now = Clock::now();
    for (; !way.onTheWay.empty() && way.onTheWay.front().due <= now; way.onTheWay.pop_front())
        due += way.onTheWay.front().value;
    if (due.empty() || ::write(way.to, due.data(), due.size()) != static_cast<ssize_t>(due.size())) return;
    const std::lock_guard lock(mutex_);
    if (way.carried.characters == 0) way.carried.first = now - static_cast<int>(due.size()) * characterTime_;
    way.carried.characters += static_cast<std::int64_t>(due.size());
    way.carried.lastButOne = std::exchange(way.carried.last, now);
}

PacedCable::Clock::time_point PacedCable::nextDelivery() const
{
    auto next = Clock::time_point::max() - 24h;
    for (const auto& way : ways_)
        if (!way.onTheWay.empty())
            next = std::min({next, way.onTheWay.front().due + longestGroup, way.onTheWay.back().due});
    return next;
}

PacedCable::Carried PacedCable::carried(const Way& way) const
{
    const std::lock_guard lock(mutex_);
    return way.carried;
}
