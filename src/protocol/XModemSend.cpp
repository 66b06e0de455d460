// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/XModemSend.h"

#include "protocol/XModemBlock.h"
#include "protocol/XModemCodes.h"

#include <utility>

using namespace XModemCodes;

void XModemSend::begin(QByteArray program)
{
    *this = {};
    program_ = std::move(program);
    state_ = State::Waiting;
}

XModemSend::Step XModemSend::take(char reply)
{
    if (state_ == State::Idle || (reply != ACK && reply != NAK && reply != CAN)) return {};
    if (reply == CAN) {
        state_ = State::Idle;
        return {{}, Ending::Cancelled};
    }
    switch (state_) {
    case State::Block:
        if (reply == NAK) return {packet_, {}};
        acknowledged_ = sent_;
        return next();
    case State::End: // a refusal counts as an answer, too
        state_ = State::Idle;
        return {{}, Ending::Sent};
    default:
        return next();
    }
}

XModemSend::Step XModemSend::next()
{
    if (isAllSent()) {
        state_ = State::End;
        return {QByteArray(1, EOT), {}};
    }
    const QByteArray part = program_.mid(sent_, XModemBlock::dataSize);
    packet_ = XModemBlock::build(nextNumber_, part);
    nextNumber_ = XModemBlock::nextNumber(nextNumber_);
    sent_ += part.size();
    state_ = State::Block;
    return {packet_, {}};
}
