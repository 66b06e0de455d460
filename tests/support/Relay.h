// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <atomic>
#include <chrono>
#include <deque>
#include <random>
#include <thread>

/// The cable between two ends: carries bytes both ways on a thread of its own and spoils them as told. The
/// same plan spoils the same bytes.
class Relay
{
public:
    using Clock = std::chrono::steady_clock;
    struct Faults {
        double flips = 0;       ///< chance that a byte has one of its lower seven bits turned over
        double drops = 0;       ///< chance that a byte is lost
        qint64 dropAt = -1;     ///< this byte is lost, counted from 0
        qint64 flipAt = -1;     ///< this byte has its bit 1 turned over
        int loseFirst = -1;     ///< the first byte of this value is lost
        int longestDelayMs = 0; ///< bytes arrive up to that much later
    };
    struct Plan {
        Faults toPeer;
        Faults toProgram;
        unsigned seed = 1;
    };

    /// Where bytes of an end come from and where bytes for it go. The descriptors stay the caller's.
    struct End {
        int out;
        int in;
    };
    Relay(End program, End peer, const Plan& plan);
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    int flipped() const { return flipped_; }
    int dropped() const { return dropped_; }

private:
    struct Piece {
        Clock::time_point due;
        QByteArray bytes;
    };
    struct Way {
        int from;
        int to;
        Faults faults;
        std::mt19937 chance;
        qint64 carried = 0;
        std::deque<Piece> pieces = {};
    };

    void run();
    void take(Way& way);
    void give(Way& way);
    QByteArray spoiled(Way& way, const QByteArray& bytes);

    Way toPeer_;
    Way toProgram_;
    std::atomic<int> flipped_ = 0;
    std::atomic<int> dropped_ = 0;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};
