// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/PlainSend.h"

#include "config/g.h"

#include <utility>

void PlainSend::prepareFromTop(const Setup& setup)
{
    setup_ = setup;
    copy_ = 1;
    restartedAt_.reset();
    prepare(Place{State::Waiting, 0}, 0);
}

void PlainSend::prepareFromCaret(const Setup& setup, qsizetype caret)
{
    setup_ = setup;
    if (place_ && place_->next != caret) place_.reset();
    if (!place_) {
        copy_ = 1;
        restartedAt_.reset();
    }
    prepare(place_, caret);
}

void PlainSend::prepareRestart(const Setup& setup, qsizetype position, const QStringList& startBlocks)
{
    setup_ = setup;
    copy_ = 1;
    restartedAt_ = position;
    prepare(Place{State::Waiting, position, startBlocks}, position);
}

void PlainSend::prepare(const std::optional<Place>& place, qsizetype next)
{
    place_ = place;
    next_ = next;
    state_ = State::Waiting;
    if (!willContinue()) line_ = {next, next};
}

QByteArray PlainSend::begin(const QByteArray& cutOff)
{
    const bool continues = willContinue();
    const auto place = std::exchange(place_, {});
    startBlocks_ = place ? place->startBlocks : QStringList();
    if (continues) {
        state_ = place->reached;
        return cutOff;
    }
    isLeaderDue_ = true;
    if (!place) return nextLine();
    state_ = State::Header;
    return Framing::header(setup_.filter.type, setup_.startOfTransfer, setup_.endOfBlock);
}

PlainSend::Step PlainSend::written()
{
    switch (state_) {
    case State::Header:
    case State::StartBlocks:
    case State::Lines:
        if (!isAllOut()) return {nextLine()};
        state_ = State::Trailer;
        return {Framing::trailer(setup_.filter.type, setup_.endOfTransfer, setup_.endOfBlock)};
    case State::Trailer:
        state_ = State::Idle;
        if (setup_.repeats) {
            restartedAt_.reset();
            prepare(Place{State::Waiting, 0}, 0);
            ++copy_;
        }
        return {.bytes = {}, .isSent = true};
    default:
        return {};
    }
}

QString PlainSend::takeLine()
{
    if (!startBlocks_.isEmpty()) {
        state_ = State::StartBlocks;
        return startBlocks_.takeFirst();
    }
    state_ = State::Lines;
    line_ = program_.lineAt(next_);
    next_ = line_.end;
    return program_.lineText(line_);
}

QByteArray PlainSend::nextLine()
{
    std::optional<QString> text;
    do
        text = setup_.filter.lineToSend(takeLine());
    while (!text && !isAllOut());
    if (!text) return {};

    text->replace(u'\n', setup_.endOfBlock);
    const bool hasLeader = std::exchange(isLeaderDue_, false) && setup_.filter.type == ControlType::Okuma;
    if (hasLeader) text->prepend(g::nulls(Framing::leaderLength));
    return g::getBytes(*text);
}

void PlainSend::stop()
{
    const auto reached = std::exchange(state_, State::Idle);
    // Stopped in its wait, a send keeps the place from which it was to begin.
    if (reached > State::Waiting) place_ = Place{reached, next_, std::exchange(startBlocks_, {})};
}

PlainSend::Restart PlainSend::lose()
{
    const bool wasUnderWay = state_ != State::Idle;
    stop();
    const auto place = std::exchange(place_, {});
    if (!place) return wasUnderWay ? Restart::FromNext : Restart::Unchanged;
    if (place->reached < State::Lines) return restartedAt_ ? Restart::FromStartBlocks : Restart::FromTop;
    next_ = line_.start;
    return Restart::FromLineOut;
}

void PlainSend::forgetPlace()
{
    if (state_ == State::Idle) place_.reset();
}

void PlainSend::rewind()
{
    state_ = State::Idle;
    place_.reset();
    restartedAt_.reset();
    next_ = 0;
}
