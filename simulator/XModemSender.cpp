// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/XModemSender.h"

#include <utility>

namespace cncsim
{
using namespace xmodem;

namespace
{
constexpr std::size_t stallSize = 60; // what still goes out of a block that stalls
constexpr std::size_t mostEnds = 10;  // EOTs without an answer, then it gives up
} // namespace

std::string XModemSender::take(const std::string& bytes, Time now)
{
    if (!bytes.empty()) lastSign_ = now;
    for (const char byte : bytes) {
        // The receiver's replies carry a parity bit: its NAK comes as 0x95.
        const char reply = settings_.plainNakOnly ? byte : static_cast<char>(byte & 0x7F);
        // A sender takes one of several waiting replies: it purges the line before it sends a block.
        if (auto out = takeReply(reply); !out.empty()) return out;
    }
    return {};
}

std::string XModemSender::tick(Time now)
{
    if (state_ != State::Ending || now - lastSign_ < std::chrono::milliseconds(settings_.pollMs)) return {};
    lastSign_ = now;
    return sendEnd();
}

std::string XModemSender::takeReply(char reply)
{
    const bool isOver = state_ == State::Complete || state_ == State::Stopped;
    if (isOver) return {};
    if (reply == can) {
        state_ = State::Stopped;
        problem_ = "the receiver cancelled at block " + std::to_string(block_);
        return {};
    }
    if (reply == ack) return acknowledged();
    if (reply != nak) return {};
    if (state_ == State::Waiting) return sendNext();
    if (state_ == State::Ending) return sendEnd();
    return sendBlock();
}

std::string XModemSender::acknowledged()
{
    if (state_ == State::Ending) {
        const bool isFirst = !std::exchange(hasMissedAck_, true);
        const bool isMissed =
            settings_.endFault == EndFault::NotConfirmed || (isFirst && settings_.endFault == EndFault::AckLost);
        if (!isMissed) state_ = State::Complete;
    }
    if (state_ != State::Sending) return {};
    acknowledged_ = block_;
    if (block_ == settings_.silentAfterBlock) {
        state_ = State::Stopped;
        problem_ = "silent after block " + std::to_string(block_);
        return {};
    }
    if (block_ == settings_.duplicateBlock && !hasDuplicated_) {
        hasDuplicated_ = true;
        return sendBlock();
    }
    return sendNext();
}

std::string XModemSender::sendNext()
{
    if (block_ * dataSize >= program_.size()) {
        state_ = State::Ending;
        return sendEnd();
    }
    state_ = State::Sending;
    ++block_;
    isRepeat_ = false;
    return sendBlock();
}

std::string XModemSender::sendEnd()
{
    if (ends_ == mostEnds) {
        state_ = State::Stopped;
        problem_ = "the receiver did not confirm the end";
        return {};
    }
    ++ends_;
    return ends_ == 1 && settings_.endFault == EndFault::EotLost ? std::string() : std::string{eot};
}

std::string XModemSender::sendBlock()
{
    if (block_ == settings_.cancelAtBlock) {
        state_ = State::Stopped;
        problem_ = "cancelled at block " + std::to_string(block_);
        return cancel;
    }
    const std::string data = program_.substr((block_ - 1) * dataSize, dataSize);
    std::string bytes = block(numberOf(block_, settings_.standardNumbers), data, settings_.padding);
    if (isRepeat_) {
        ++repeatedBlocks_;
        return bytes;
    }
    isRepeat_ = true;
    if (block_ == settings_.spoilBlock) ++bytes.back();
    if (block_ == settings_.stallInBlock) bytes.resize(stallSize);
    return bytes;
}
} // namespace cncsim
