// SPDX-License-Identifier: GPL-3.0-or-later
// What the G and M codes of a block do to the state.
#include "program/StateReader.h"

#include <algorithm>

namespace
{
QByteArray joined(const Block::Word& word)
{
    return word.letter + word.number.toByteArray();
}

bool isAxisOf(const Block::Word& word)
{
    return Axes::indexOf(word.letter) >= 0 && !word.afterComma;
}
} // namespace

bool StateReader::Asked::hasPositions() const
{
    constexpr auto bit = [](Action action) { return 1U << static_cast<unsigned>(action); };
    constexpr unsigned others = bit(Action::Data) | bit(Action::AllLost) | bit(Action::Stores) |
                                bit(Action::LocalZero) | bit(Action::ZeroOrLimit) | bit(Action::Call) |
                                bit(Action::ReturnsAfter) | bit(Action::Contour) | bit(Action::TransformOn) |
                                bit(Action::TransformOff);
    return (actions & others) == 0;
}

StateReader::Asked StateReader::readCodes()
{
    Asked asked;
    for (const auto& word : block_.words()) {
        if ((word.letter == 'G' || word.letter == 'M') && !word.afterComma) readCode(word, asked);
    }
    if (asked.has(Action::AllLost)) axes_.loseAll(asked.cause, line_);
    if (asked.has(Action::Call)) {
        const auto* number = block_.find('P');
        const QByteArray call = number ? asked.cause.toByteArray() + ' ' + joined(*number) : asked.cause.toByteArray();
        remark(RemarkKind::Call, call);
        disturb(call);
    }
    if (asked.has(Action::Stores)) {
        remark(RemarkKind::StoresData, asked.cause);
        axes_.loseAll(asked.cause, line_); // with another offset the same place has other numbers
        state_.clearX = state_.clearZ = {};
    }
    if (asked.has(Action::LocalZero) || asked.has(Action::ZeroOrLimit)) setZero(asked);
    if (asked.has(Action::TransformOn) || asked.has(Action::TransformOff)) setTransform(asked);
    if (asked.has(Action::CycleEnd)) endCycle();
    if (asked.has(Action::Cycle) || asked.has(Action::Turning)) startCycle(asked);
    if (asked.has(Action::Contour)) {
        const auto* first = block_.find('P');
        const auto* last = block_.find('Q');
        contourFirst_ = first && last ? first->number.toByteArray().toInt() : -1;
        contourLast_ = first && last ? last->number.toByteArray().toInt() : -1;
        contourCall_ = line_;
    }
    if (asked.has(Action::ShapeBegin)) {
        isInContour_ = true;
        contourCall_ = line_;
    }
    return asked;
}

void StateReader::readCode(const Block::Word& word, Asked& asked)
{
    const int number = word.form == Block::Form::Number ? Codes::number(word.number) : -1;
    const Meaning meaning = Codes::meaning(state_.control, word.letter, number);
    if (meaning.action == Action::Unknown) remark(RemarkKind::NotUnderstood, joined(word));
    // An M code that is not understood moves no axis.
    if (meaning.action == Action::Unknown && word.letter == 'M') return;
    asked.actions |= 1U << static_cast<unsigned>(meaning.action);
    if (meaning.action == Action::Modal) return setModal(meaning.group, word);
    asked.cause = word.text;
    if (meaning.action == Action::CoolantOff) {
        setModal(ModalGroup::Flood, word);
        modal(ModalGroup::Mist) = {}; // one word ends both
    }
    if (meaning.action == Action::OffsetByH) {
        const auto* offset = block_.find('H');
        if (offset)
            setWorkOffset(word, offset);
        else
            remark(RemarkKind::NotUnderstood, joined(word));
    }
}

void StateReader::setModal(ModalGroup group, const Block::Word& word)
{
    if (group == ModalGroup::WorkOffset) {
        const int code = Codes::number(word.number);
        return setWorkOffset(word, code == 541 || code == 540 ? block_.find('P') : nullptr);
    }
    const bool isNew = say(modal(group), word);
    const int number = Codes::number(word.number);
    if (group == ModalGroup::Distance) isIncremental_ = number == 910;
    if (group == ModalGroup::Motion) {
        isRapid_ = number == 0;
        endCycle(); // any motion code ends a canned cycle
    }
    if (group == ModalGroup::Units && isNew) {
        axes_.loseAll(word.text, line_);
        state_.localZero.isPlain = false; // said in the other unit
    }
    if ((group == ModalGroup::Units || group == ModalGroup::ToolLength) && isNew) state_.clearX = state_.clearZ = {};
}

// With a number of its own: "G54.1 P3", "G15 H2".
void StateReader::setWorkOffset(const Block::Word& code, const Block::Word* number)
{
    InForce& offset = modal(ModalGroup::WorkOffset);
    InForce now = said(code);
    if (number) {
        now.text += ' ' + joined(*number);
        now.isPlain = number->form == Block::Form::Number;
    }
    if (offset.text != now.text) {
        axes_.loseAll(now.text, line_); // the same place has other numbers now
        state_.clearX = state_.clearZ = {};
    }
    offset = now;
}

// G52, and G50 or G92: with S a limit, with axes another zero point.
void StateReader::setZero(const Asked& asked)
{
    QByteArray words = asked.cause.toByteArray();
    bool hasAxes = false;
    bool isBack = true; // all zero
    bool isPlain = true;
    for (const auto& word : block_.words()) {
        if (!isAxisOf(word) && !(state_.control == Control::FanucLathe && word.letter == 'H')) continue;
        hasAxes = true;
        const auto shift = word.form == Block::Form::Number ? Decimal::from(word.number) : std::nullopt;
        isBack = isBack && shift && shift->isZero();
        words += ' ' + joined(word);
        isPlain = isPlain && word.form == Block::Form::Number;
    }
    const auto* limit = block_.find('S');
    if (limit && asked.has(Action::ZeroOrLimit)) {
        state_.speedLimit = said(*limit);
        state_.speedLimit.text = asked.cause.toByteArray() + ' ' + state_.speedLimit.text;
    }
    if (!hasAxes) {
        if (!limit) remark(RemarkKind::NotUnderstood, asked.cause);
        return;
    }
    axes_.loseAll(asked.cause, line_);
    state_.clearX = state_.clearZ = {};
    if (asked.has(Action::LocalZero))
        state_.localZero = isBack ? InForce{} : InForce{words, line_, isPlain, !block_.isSkippable()};
    else
        remark(RemarkKind::ZeroShift, words);
}

void StateReader::setTransform(const Asked& asked)
{
    const bool isOn = asked.has(Action::TransformOn);
    if (isOn) remark(RemarkKind::Transform, asked.cause);
    if (!isOn && !state_.transform.isSaid()) return; // nothing to take back
    state_.transform = isOn ? InForce{asked.cause.toByteArray(), line_} : InForce{};
    axes_.loseAll(asked.cause, line_);
    state_.clearX = state_.clearZ = {};
}

void StateReader::startCycle(const Asked& asked)
{
    isTurningCycle_ = asked.has(Action::Turning);
    const auto isMove = [](const Block::Word& word) { return QByteArrayView("XZUW").contains(word.letter); };
    // In other G code systems these are the absolute mode and its like.
    if (isTurningCycle_ && !std::any_of(block_.words().begin(), block_.words().end(), isMove))
        return remark(RemarkKind::NotUnderstood, asked.cause);
    if (!state_.cycle.isSaid()) state_.cycleStart = axes_.at(Axes::indexOf('Z'));
    state_.cycle = {asked.cause.toByteArray(), line_, true, !block_.isSkippable()};
}

void StateReader::endCycle()
{
    if (!state_.cycle.isSaid()) return;
    state_.hasCycleEnded = true;
    state_.cycle = {};
    cycleWords_.fill({});
}
