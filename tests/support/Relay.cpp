// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Relay.h"

#include <algorithm>
#include <array>
#include <poll.h>
#include <unistd.h>

Relay::Relay(End program, End peer, const Plan& plan)
    : toPeer_{program.out, peer.in, plan.toPeer, std::mt19937(plan.seed)}, toProgram_{peer.out, program.in,
                                                                                      plan.toProgram,
                                                                                      std::mt19937(plan.seed + 1)},
      thread_([this] { run(); })
{
}

Relay::~Relay()
{
    isEnding_ = true;
    thread_.join();
}

void Relay::run()
{
    while (!isEnding_) {
        std::array<pollfd, 2> ends{pollfd{toPeer_.from, POLLIN, 0}, pollfd{toProgram_.from, POLLIN, 0}};
        ::poll(ends.data(), ends.size(), 1);
        if (ends[0].revents & POLLIN) take(toPeer_);
        if (ends[1].revents & POLLIN) take(toProgram_);
        give(toPeer_);
        give(toProgram_);
    }
}

void Relay::take(Way& way)
{
    std::array<char, 4096> buffer;
    const ssize_t count = ::read(way.from, buffer.data(), buffer.size());
    if (count <= 0) return;
    const int delay = std::uniform_int_distribution(0, way.faults.longestDelayMs)(way.chance);
    way.pieces.push_back({Clock::now() + std::chrono::milliseconds(delay), spoiled(way, {buffer.data(), count})});
}

void Relay::give(Way& way)
{
    while (!way.pieces.empty() && way.pieces.front().due <= Clock::now()) {
        QByteArray& bytes = way.pieces.front().bytes;
        const ssize_t count = ::write(way.to, bytes.constData(), static_cast<std::size_t>(bytes.size()));
        bytes.remove(0, std::max<ssize_t>(count, 0));
        if (!bytes.isEmpty()) return; // that end takes no more for now
        way.pieces.pop_front();
    }
}

QByteArray Relay::spoiled(Way& way, const QByteArray& bytes)
{
    std::uniform_real_distribution<> share(0, 1);
    QByteArray result;
    for (char byte : bytes) {
        const qint64 at = way.carried++;
        const bool isFirst = static_cast<unsigned char>(byte) == way.faults.loseFirst;
        if (isFirst) way.faults.loseFirst = -1;
        if (isFirst || at == way.faults.dropAt || share(way.chance) < way.faults.drops) {
            ++dropped_;
            continue;
        }
        const bool isHit = share(way.chance) < way.faults.flips;
        if (isHit || at == way.faults.flipAt) {
            ++flipped_;
            byte = static_cast<char>(byte ^ (isHit ? 1 << std::uniform_int_distribution(0, 6)(way.chance) : 2));
        }
        result += byte;
    }
    return result;
}
