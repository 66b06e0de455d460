// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/StateReader.h"

#include "program/Characters.h"
#include "program/Lines.h"

#include <algorithm>

namespace
{
constexpr qsizetype mostLandings = 10'000;

// A block number without its leading zeros.
QByteArray label(QByteArrayView number)
{
    while (number.size() > 1 && number.front() == '0')
        number = number.sliced(1);
    return number.toByteArray().toUpper();
}
// "WHILE", "DO1", "GOTO100"
bool isFlowWord(const Block::Name& name)
{
    QByteArrayView word = name.text;
    while (!word.isEmpty() && Characters::isDigit(word.back()))
        word.chop(1);
    const QByteArray capitals = word.toByteArray().toUpper();
    return capitals == "GOTO" || capitals == "IF" || capitals == "WHILE" || capitals == "DO" || capitals == "END";
}
} // namespace

void StateReader::take(QByteArrayView line)
{
    ++line_;
    block_.read(line);
    const bool isTapeEnd = block_.words().isEmpty() && block_.names().isEmpty() && block_.assignment().isEmpty();
    if (isTapeEnd && block_.strays().isEmpty()) return;
    if (isTapeEnd && block_.strays().front().startsWith('%')) return;
    if (hasEnded_) beginAnotherProgram();
    noteFlow();
    if (isInContour()) return;
    const Asked asked = readCodes();
    readValues(asked);
    readAxes(asked);
    changeTool(asked);
    endBlock(asked);
}

void StateReader::noteFlow()
{
    noteLanding();
    if (block_.isSkippable()) remark(RemarkKind::BlockSkip, "/");
    if (!block_.assignment().isEmpty()) remark(RemarkKind::Variable, block_.assignment());
    if (std::any_of(block_.names().begin(), block_.names().end(), isFlowWord)) return noteJump();
    for (const auto& name : block_.names())
        noteName(name);
    for (const auto& stray : block_.strays()) {
        if (!stray.startsWith('%')) remark(RemarkKind::NotUnderstood, stray);
    }
}

void StateReader::noteName(const Block::Name& name)
{
    const QByteArray text = name.text.toByteArray().toUpper();
    if (isOkuma(state_.control)) {
        if (text.startsWith('N') && name.value.isEmpty() && text != "NCYL") return; // a block's name
        if (text == "CALL" || text == "MODIN" || text == "MODOUT") {
            const auto* number = block_.find('O');
            const QByteArray called = number ? text + ' ' + number->text.toByteArray() : text;
            remark(RemarkKind::Call, called);
            disturb(called);
            return;
        }
        if (text == "RTS") {
            hasEnded_ = !block_.isSkippable();
            return;
        }
        // Speeds of a second spindle and the like are set as variables are, but are none.
        if (!name.value.isEmpty() && (text.startsWith('V') || text.size() > 2))
            return remark(RemarkKind::Variable, text + '=' + name.value.toByteArray());
    }
    remark(RemarkKind::NotUnderstood, name.text);
}

void StateReader::noteJump()
{
    QByteArray jump;
    QByteArray target;
    for (const auto& name : block_.names()) {
        jump += name.text.toByteArray().toUpper() + ' ';
        if (name.text.size() > 4 && name.text.first(4).compare("GOTO", Qt::CaseInsensitive) == 0)
            target = name.text.sliced(4).toByteArray();
    }
    // "GOTO 100" and Okuma's "IF [..] N100"
    for (const auto& stray : block_.strays())
        target = stray.toByteArray();
    if (const auto* number = block_.find('N'); number && isOkuma(state_.control)) target = number->number.toByteArray();
    remark(RemarkKind::Jump, jump + target);
    disturb(jump.trimmed());
    if (!target.isEmpty() && std::all_of(target.begin(), target.end(), Characters::isDigit)) {
        if (landings_.size() < mostLandings) landings_.insert(label(target));
    } else if (jump.contains("GOTO") || isOkuma(state_.control)) {
        hasWorkedOutJump_ = true;
    }
}

// What was said before a block that a jump leads to may not have been said on the way that was taken.
void StateReader::noteLanding()
{
    if (landings_.isEmpty() && !hasWorkedOutJump_) return;
    const auto* number = block_.find('N');
    const bool isNamed = isOkuma(state_.control) && block_.hasName("N");
    if (!isNamed && (!number || (!hasWorkedOutJump_ && !landings_.contains(label(number->number))))) return;
    disturb(isNamed ? QByteArrayView("jump") : number->text);
}

// Something else may have changed whatever was said so far.
void StateReader::disturb(QByteArrayView cause)
{
    disturbedLine_ = line_;
    axes_.loseAll(cause, line_);
    state_.clearX = state_.clearZ = {};
}

// A subprogram further down in the file: its caller decides what is in force, and nothing above says who that is.
void StateReader::beginAnotherProgram()
{
    StateReader fresh(state_.control);
    fresh.line_ = line_;
    std::swap(fresh.remarks_, remarks_);
    std::swap(fresh.block_, block_);
    *this = std::move(fresh);
    const auto* number = block_.find('O');
    remark(RemarkKind::AnotherProgram, number ? number->text : QByteArrayView());
}

bool StateReader::isInContour()
{
    const auto* number = block_.find('N');
    const int label = number ? number->number.toByteArray().toInt() : -1;
    if (!isInContour_ && label >= 0 && label == contourFirst_) isInContour_ = true;
    if (!isInContour_) return false;
    const bool isLast = isOkuma(state_.control)
                            ? std::any_of(block_.words().begin(), block_.words().end(),
                                          [](const Block::Word& word) {
                                              return word.letter == 'G' && Codes::number(word.number) == 800;
                                          })
                            : label >= 0 && label == contourLast_;
    if (isLast) {
        isInContour_ = false;
        contourCall_ = 0;
        contourFirst_ = contourLast_ = -1;
    }
    return true;
}

void StateReader::endBlock(const Asked& asked)
{
    if (asked.has(Action::End) && !block_.isSkippable()) hasEnded_ = true;
    noteClearPlace(asked);
    const auto& comp = modal(ModalGroup::CutterComp);
    const bool isCompensated = comp.isSaid() && Codes::number(QByteArrayView(comp.text).sliced(1)) != 400;
    const auto knows = [this](char letter) { return axes_.isKnown(Axes::indexOf(letter)); };
    if (!isCompensated && !state_.cycle.isSaid() && !isIncremental_ && !isThreading(state_) &&
        !state_.transform.isSaid() && knows('X') && knows('Z') && (isLathe(state_.control) || knows('Y')) &&
        contourFirst_ < 0 && !isInContour_)
        state_.clearLine = line_ + 1;
}

ProgramState StateReader::state() const
{
    ProgramState state = state_;
    state.line = line_ + 1;
    const auto settle = [this](InForce& word) {
        word.isSure = word.isSure && (!word.isSaid() || word.line > disturbedLine_);
    };
    for (InForce& word : state.modal)
        settle(word);
    for (InForce* word : {&state.feed, &state.speed, &state.speedLimit, &state.tool, &state.nextTool,
                          &state.radiusNumber, &state.lengthNumber, &state.localZero, &state.transform, &state.cycle})
        settle(*word);
    for (int axis = 0; axis < Axes::count; ++axis)
        state.axes[static_cast<std::size_t>(axis)] = axes_.at(axis);
    for (const InForce& word : cycleWords_) {
        if (!word.isSaid()) continue;
        state.cycleWords += state.cycleWords.isEmpty() ? word.text : ' ' + word.text;
        state.cycleWordsLine = std::max(state.cycleWordsLine, word.line);
        state.cycle.isPlain = state.cycle.isPlain && word.isPlain;
    }
    state.contourLine = isInContour_ ? contourCall_ : 0;
    state.remarks = remarks_.list();
    for (int kind = 0; kind < remarkKindCount; ++kind)
        state.remarkCounts[static_cast<std::size_t>(kind)] = remarks_.count(static_cast<RemarkKind>(kind));
    return state;
}

std::optional<ProgramState> StateReader::above(qsizetype line, QByteArrayView text, Control control,
                                               const std::atomic<bool>* cancelled)
{
    constexpr qsizetype linesBetweenLooks = 4096;
    StateReader reader(control);
    Lines lines(text);
    for (qsizetype read = 1; read < line && !lines.atEnd(); ++read) {
        if (cancelled && read % linesBetweenLooks == 0 && *cancelled) return std::nullopt;
        reader.take(lines.next());
    }
    return reader.state();
}
