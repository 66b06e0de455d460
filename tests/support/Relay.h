// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <poll.h>
#include <random>
#include <thread>
#include <unistd.h>

/// The cable between two ends: carries bytes both ways and spoils them as told, by the same plan the same ones.
class Relay
{
public:
    struct Faults {
        double flips = 0;       ///< chance that a byte has one of its lower seven bits turned over
        double drops = 0;       ///< chance that a byte is lost
        qint64 dropAt = -1;     ///< this byte is lost, counted from 0
        qint64 flipAt = -1;     ///< this byte has its bit 1 turned over
        int loseFirst = -1;     ///< the first byte of this value is lost
        int loseAfter = 0;      ///< not the first, but the one after so many of them
        int longestDelayMs = 0; ///< bytes arrive up to that much later
    };
    struct Plan {
        Faults toPeer, toProgram;
        unsigned seed = 1;
    };
    /// Where bytes of an end come from and where bytes for it go. The descriptors stay the caller's.
    struct End {
        int out, in;
    };
    Relay(End program, End peer, const Plan& plan)
        : ways_{Way{program.out, peer.in, plan.toPeer, std::mt19937(plan.seed)},
                Way{peer.out, program.in, plan.toProgram, std::mt19937(plan.seed + 1)}},
          thread_([this](const std::stop_token& stop) { run(stop); })
    {
    }

    int flipped() const { return flipped_; }
    int dropped() const { return dropped_; }

private:
    struct Way {
        int from, to;
        Faults faults;
        std::mt19937 chance;
        qint64 carried = 0;
        std::deque<std::pair<std::chrono::steady_clock::time_point, QByteArray>> pieces = {}; // and when they are due
    };

    void run(const std::stop_token& stop)
    {
        std::array<pollfd, 2> ends{pollfd{ways_[0].from, POLLIN, 0}, pollfd{ways_[1].from, POLLIN, 0}};
        for (; !stop.stop_requested(); ::poll(ends.data(), ends.size(), 1)) {
            for (std::size_t way = 0; way < ends.size(); ++way) {
                if (ends[way].revents & POLLIN) take(ways_[way]);
                give(ways_[way]);
            }
        }
    }
    void take(Way& way)
    {
        std::array<char, 4096> buffer;
        const ssize_t count = ::read(way.from, buffer.data(), buffer.size());
        if (count <= 0) return;
        const int delay = std::uniform_int_distribution(0, way.faults.longestDelayMs)(way.chance);
        way.pieces.push_back({std::chrono::steady_clock::now() + std::chrono::milliseconds(delay),
                              spoiled(way, {buffer.data(), count})});
    }
    static void give(Way& way)
    {
        while (!way.pieces.empty() && way.pieces.front().first <= std::chrono::steady_clock::now()) {
            QByteArray& bytes = way.pieces.front().second;
            const ssize_t count = ::write(way.to, bytes.constData(), static_cast<std::size_t>(bytes.size()));
            bytes.remove(0, std::max<ssize_t>(count, 0));
            if (!bytes.isEmpty()) return; // that end takes no more for now
            way.pieces.pop_front();
        }
    }
    QByteArray spoiled(Way& way, const QByteArray& bytes)
    {
        std::uniform_real_distribution<> share(0, 1);
        QByteArray result;
        for (const char byte : bytes) {
            const qint64 at = way.carried++;
            const bool isFirst =
                static_cast<unsigned char>(byte) == way.faults.loseFirst && way.faults.loseAfter-- == 0;
            if (isFirst) way.faults.loseFirst = -1;
            const bool isLost = isFirst || at == way.faults.dropAt || share(way.chance) < way.faults.drops;
            const bool isHit = !isLost && share(way.chance) < way.faults.flips;
            const bool isFlipped = isHit || (!isLost && at == way.faults.flipAt);
            const int mask = isHit ? 1 << std::uniform_int_distribution(0, 6)(way.chance) : 2;
            if (!isLost) result += static_cast<char>(isFlipped ? byte ^ mask : byte);
            flipped_ += isFlipped;
            dropped_ += isLost;
        }
        return result;
    }

    std::array<Way, 2> ways_;
    std::atomic<int> flipped_ = 0, dropped_ = 0;
    std::jthread thread_;
};
