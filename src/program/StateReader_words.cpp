// SPDX-License-Identifier: GPL-3.0-or-later
// What the words other than G and M do to the state.
#include "program/StateReader.h"

using Form = Block::Form;

InForce StateReader::said(const Block::Word& word) const
{
    return {word.letter + word.number.toByteArray(), line_, word.form == Form::Number, !block_.isSkippable()};
}

// True if the word was not in force yet. Most words of a long program repeat what is: that costs no new text.
bool StateReader::say(InForce& into, const Block::Word& word) const
{
    const QByteArrayView before = into.text;
    if (before.isEmpty() || before.front() != word.letter || before.sliced(1) != word.number) {
        into = said(word);
        return true;
    }
    into.line = line_;
    into.isPlain = word.form == Form::Number;
    into.isSure = !block_.isSkippable();
    return false;
}

void StateReader::readValues(const Asked& asked)
{
    for (const auto& word : block_.words()) {
        if (word.form == Form::Expression && !word.afterComma) remark(RemarkKind::Variable, word.text);
        if (word.form == Form::Missing || word.form == Form::Malformed)
            remark(RemarkKind::NotUnderstood, word.text);
        else if (!word.afterComma)
            readValue(word, asked);
    }
}

void StateReader::readValue(const Block::Word& word, const Asked& asked)
{
    const bool isMill = !isLathe(state_.control);
    const bool isData =
        asked.has(Action::Data) || asked.has(Action::Stores) || asked.has(Action::Call) || asked.has(Action::AllLost);
    switch (word.letter) {
    case 'F':
        if (!isData || asked.has(Action::AllLost)) say(state_.feed, word);
        return;
    case 'S':
        if (!isData && !asked.has(Action::ZeroOrLimit)) say(state_.speed, word);
        return;
    case 'T':
        if (isData) return;
        if (isMill)
            prepareTool(word, asked);
        else if (say(state_.tool, word)) {
            axes_.loseAll(word.text, line_); // another tool's offset: the same place has other numbers
            state_.clearX = state_.clearZ = {};
        }
        return;
    case 'D':
        if (isMill && !isData) say(state_.radiusNumber, word);
        return;
    case 'H':
        if (isMill && !isData && !asked.has(Action::OffsetByH)) say(state_.lengthNumber, word);
        return;
    case 'U':
    case 'W':
        if (state_.control == Control::OkumaLathe && asked.hasPositions()) remark(RemarkKind::NotUnderstood, word.text);
        return;
    default:
        return;
    }
}

void StateReader::readAxes(const Asked& asked)
{
    if (!asked.hasPositions()) return;
    const bool leavesCycle = asked.has(Action::Reference) || asked.has(Action::Lost);
    if (state_.cycle.isSaid() && !leavesCycle) return runCycle(asked);
    for (const auto& word : block_.words()) {
        if (word.afterComma) continue;
        const bool isFanucLathe = state_.control == Control::FanucLathe;
        const qsizetype step = isFanucLathe ? QByteArrayView("UVWH").indexOf(word.letter) : -1;
        const int axis = Axes::indexOf(step >= 0 ? "XYZC"[step] : word.letter);
        if (axis < 0 || (state_.control == Control::OkumaLathe && axis >= Axes::indexOf('U'))) continue;
        moveAxis(axis, word, step >= 0 || isIncremental_, asked);
    }
}

void StateReader::moveAxis(int axis, const Block::Word& word, bool isIncremental, const Asked& asked)
{
    if (asked.has(Action::Reference)) return axes_.toReference(axis, asked.cause, line_);
    if (asked.has(Action::Lost) || asked.has(Action::Unknown)) return axes_.lose(axis, asked.cause, line_);
    if (state_.transform.isSaid()) return axes_.lose(axis, state_.transform.text, line_);
    if (word.form != Form::Number) return axes_.lose(axis, word.text, line_);
    if (block_.isSkippable()) return axes_.lose(axis, "/", line_);
    if (isIncremental)
        axes_.moveBy(axis, word.number, 1, line_);
    else
        axes_.setTo(axis, word.number, line_);
}

// A block while a canned cycle goes on: the positions are those of its holes, Z and the rest say how it works.
void StateReader::runCycle(const Asked& asked)
{
    bool runs = false;
    const auto* repeats = block_.find('K') ? block_.find('K') : block_.find('L');
    const auto times = repeats && repeats->form == Form::Number ? repeats->number.toByteArray().toLongLong() : 1;
    for (const auto& word : block_.words()) {
        if (word.afterComma) continue;
        if (QByteArrayView(isTurningCycle_ ? "XZUWR" : "ZRQPIJ").contains(word.letter)) {
            say(cycleWords_[static_cast<std::size_t>(word.letter - 'A')], word);
            runs = true;
            continue;
        }
        const int axis = Axes::indexOf(word.letter);
        if (axis < 0 || isTurningCycle_) continue;
        runs = true;
        if (block_.isSkippable())
            axes_.lose(axis, "/", line_);
        else if (repeats && (repeats->form != Form::Number || times == 0))
            axes_.lose(axis, repeats->text, line_);
        else if (isIncremental_ && !asked.has(Action::Unknown) && word.form == Form::Number)
            axes_.moveBy(axis, word.number, times, line_);
        else
            moveAxis(axis, word, isIncremental_, asked);
    }
    if (!runs || isTurningCycle_) return; // a turning cycle comes back to where it began
    const auto& plane = modal(ModalGroup::Plane);
    const bool isAlongZ = !plane.isSaid() || Codes::number(QByteArrayView(plane.text).sliced(1)) == 170;
    if (!isAlongZ || isLathe(state_.control)) return axes_.loseAll(state_.cycle.text, line_);
    returnFromCycle();
}

// Z after a hole: at the start with G98, at the R level with G99 and Okuma's M54.
void StateReader::returnFromCycle()
{
    const int z = Axes::indexOf('Z');
    const auto& level = modal(ModalGroup::ReturnLevel);
    const int number = level.isSaid() ? Codes::number(QByteArrayView(level.text).sliced(1)) : 0;
    const bool isToStart = number == 980;
    const bool isToR = number == 990 || number == 540;
    const InForce& r = cycleWords_['R' - 'A'];
    if ((isToStart || (isToR && isIncremental_)) && state_.cycleStart.isKnown())
        axes_.setTo(z, state_.cycleStart.text, line_);
    if (isToStart && state_.cycleStart.isKnown()) return;
    if (isToR && r.isSaid() && r.isPlain && (!isIncremental_ || state_.cycleStart.isKnown())) {
        if (isIncremental_) return axes_.moveBy(z, QByteArrayView(r.text).sliced(1), 1, line_);
        return axes_.setTo(z, QByteArrayView(r.text).sliced(1), line_);
    }
    axes_.lose(z, state_.cycle.text, line_);
}

// "T2 M6" after a T1: some machines put in the tool that was prepared, and prepare the other.
void StateReader::prepareTool(const Block::Word& word, const Asked& asked)
{
    const bool isPrepared = state_.nextTool.isSaid();
    const bool isAnother = say(state_.nextTool, word);
    isToolDoubtful_ = isPrepared && isAnother && asked.has(Action::ToolChange);
}

void StateReader::changeTool(const Asked& asked)
{
    if (!asked.has(Action::ToolChange)) return;
    const InForce& next = state_.nextTool;
    state_.tool = {next.text, line_, next.isPlain, !isToolDoubtful_ && !block_.isSkippable()};
    state_.nextTool = {};
    isToolDoubtful_ = false;
    state_.clearX = state_.clearZ = {};
    axes_.loseAll(asked.cause, line_);       // the changer has its own place
    modal(ModalGroup::Spindle) = {};         // and stops the spindle
    modal(ModalGroup::Flood).isSure = false; // and the coolant, on many machines
    modal(ModalGroup::Mist).isSure = false;
}

void StateReader::noteClearPlace(const Asked& asked)
{
    if (!isRapid_ || state_.cycle.isSaid() || !asked.hasPositions()) return;
    const AxisPosition z = axes_.at(Axes::indexOf('Z'));
    if (isLathe(state_.control)) {
        const AxisPosition x = axes_.at(Axes::indexOf('X'));
        if (state_.clearX.isKnown() || !x.isKnown() || !z.isKnown()) return;
        state_.clearX = x;
        state_.clearZ = z;
    } else if (z.isKnown() && z.line == line_) {
        const auto before = Decimal::from(state_.clearZ.text);
        const auto now = Decimal::from(z.text);
        const bool isHigher = now && (!before || Decimal::isGreater(*now, *before).value_or(false));
        if (isHigher) state_.clearZ = z;
    }
}
