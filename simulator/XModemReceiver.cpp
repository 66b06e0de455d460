// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/XModemReceiver.h"

#include <utility>

namespace cncsim
{
using namespace xmodem;

namespace
{
unsigned code(char byte)
{
    return static_cast<unsigned char>(byte);
}
} // namespace

std::string XModemReceiver::take(const std::string& bytes, Time now)
{
    std::string replies;
    for (const char byte : bytes)
        replies += takeByte(byte);
    if (!bytes.empty()) lastSign_ = now;
    return replies;
}

std::string XModemReceiver::tick(Time now)
{
    if (state_ == State::Stopped || isMute_) return {};
    if (!isPollDue_ && now - lastSign_ < std::chrono::milliseconds(settings_.pollMs)) return {};
    isPollDue_ = false;
    lastSign_ = now;
    if (!packet_.empty()) return refuse("stalled");
    return {nak};
}

std::string XModemReceiver::takeByte(char byte)
{
    if (state_ == State::Stopped || isMute_) return {};
    if (!packet_.empty()) {
        packet_ += byte;
        return packet_.size() == blockSize ? takeBlock() : std::string();
    }
    if (byte == eot) return takeEnd();
    if (byte != soh) {
        note("a byte (" + std::to_string(code(byte)) + ") between the blocks");
        return {};
    }
    if (state_ == State::Waiting) {
        data_.clear();
        blocks_ = 0;
    }
    state_ = State::Receiving;
    packet_ = byte;
    return {};
}

std::string XModemReceiver::takeEnd()
{
    const bool isFirst = !std::exchange(hasFailedEnd_, true);
    if (isFirst && settings_.endFault == EndFault::EotLost) return {};
    if (isFirst && settings_.endFault == EndFault::EotRefused) return {nak};
    // A repeated EOT only means that the sender missed the ACK; one before any block ends an empty program.
    if (state_ == State::Receiving || programs_ == 0) ++programs_;
    state_ = State::Waiting;
    isMute_ = settings_.endFault == EndFault::NotConfirmed;
    if (isMute_ || (isFirst && settings_.endFault == EndFault::AckLost)) return {};
    return {ack};
}

unsigned XModemReceiver::numberOf(std::size_t block) const
{
    return xmodem::numberOf(block, settings_.standardNumbers);
}

std::string XModemReceiver::takeBlock()
{
    const std::size_t block = blocks_ + 1;
    const unsigned number = code(packet_[1]);
    const std::string data = packet_.substr(3, dataSize);
    if (number + code(packet_[2]) != 255) return refuse("has a wrong number");
    if (checksum(data) != packet_.back()) return refuse("has a wrong checksum");
    packet_.clear();
    if (blocks_ > 0 && number == numberOf(blocks_)) {
        ++repeatedBlocks_;
        return {ack};
    }
    if (number != numberOf(block))
        return cancelFor("block number " + std::to_string(number) + " came instead of " +
                         std::to_string(numberOf(block)));
    if (block == settings_.cancelAtBlock) return cancelFor("cancelled at block " + std::to_string(block));
    if (block == settings_.nakBlock && !hasRefused_) {
        hasRefused_ = true;
        return {nak};
    }
    data_ += data;
    blocks_ = block;
    if (block == settings_.silentAfterBlock) state_ = State::Stopped;
    return {ack};
}

std::string XModemReceiver::refuse(const std::string& why)
{
    packet_.clear();
    note("block " + std::to_string(blocks_ + 1) + " " + why);
    return {nak};
}

std::string XModemReceiver::cancelFor(const std::string& why)
{
    state_ = State::Stopped;
    note(why);
    return cancel;
}

void XModemReceiver::note(const std::string& problem)
{
    if (problem_.empty()) problem_ = problem; // the first fault explains the others
}
} // namespace cncsim
