// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/XModemSend.h"

#include "protocol/XModemCodes.h"

#include <utility>

using namespace XModemCodes;

namespace
{
constexpr int endSilence = 10; // ticks without an answer until EOT goes out again
constexpr int mostEndRepeats = 10;
} // namespace

void XModemSend::begin(QByteArray program, XModemBlock::Numbers numbers)
{
    const int late = lateAnswers_;
    *this = {};
    lateAnswers_ = late;
    program_ = std::move(program);
    numbers_ = numbers;
    state_ = State::Waiting;
}

void XModemSend::stop()
{
    state_ = State::Idle;
    lateAnswers_ = 0;
}

XModemSend::Step XModemSend::take(char reply)
{
    if (state_ == State::Idle || (reply != ACK && reply != NAK && reply != CAN)) return {};
    silence_ = 0;
    if (reply == CAN) {
        state_ = State::Idle;
        return {{}, Ending::Cancelled};
    }
    switch (state_) {
    case State::Waiting:
        // Where EOT went out more than once, each may be acknowledged. That asks for no block of the next copy.
        if (reply == ACK && lateAnswers_ > 0) {
            --lateAnswers_;
            return {};
        }
        return next();
    case State::Block:
        if (reply == NAK) return {packet_, {}};
        acknowledged_ = sent_;
        return next();
    default:
        // EOT came damaged, or its ACK got lost and the control already asks for the next program.
        if (reply == NAK) return repeatEnd();
        state_ = State::Idle;
        lateAnswers_ = endRepeats_;
        return {{}, Ending::Sent};
    }
}

XModemSend::Step XModemSend::tick()
{
    if (state_ != State::Block && state_ != State::End) return {};
    ++silence_;
    return state_ == State::End && silence_ % endSilence == 0 ? repeatEnd() : Step{};
}

XModemSend::Step XModemSend::next()
{
    if (isAllSent()) {
        state_ = State::End;
        return {QByteArray(1, EOT), {}};
    }
    const QByteArray part = program_.mid(sent_, XModemBlock::dataSize);
    packet_ = XModemBlock::build(nextNumber_, part);
    nextNumber_ = XModemBlock::nextNumber(nextNumber_, numbers_);
    sent_ += part.size();
    state_ = State::Block;
    return {packet_, {}};
}

XModemSend::Step XModemSend::repeatEnd()
{
    if (endRepeats_ >= mostEndRepeats) {
        state_ = State::Idle;
        return {{}, Ending::Unconfirmed};
    }
    ++endRepeats_;
    return {QByteArray(1, EOT), {}};
}

bool XModemSend::isAtWrap() const
{
    if (sent_ <= XModemBlock::dataSize || acknowledged_ >= sent_) return false;
    return static_cast<unsigned char>(packet_[1]) == XModemBlock::nextNumber(255, numbers_);
}
