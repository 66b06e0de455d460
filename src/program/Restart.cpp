// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/Restart.h"

#include "program/StartWarnings.h"

#include <algorithm>

using Moves = StartBlock::Moves;

namespace
{
int numberOf(const InForce& code)
{
    return code.isSaid() ? Codes::number(QByteArrayView(code.text).sliced(1)) : -1;
}

class Proposal
{
public:
    explicit Proposal(const ProgramState& state) : state_(state) {}

    QList<StartBlock> blocks()
    {
        addSettings();
        addTool();
        addSpindle();
        if (isLathe(state_.control)) {
            addLatheApproach();
        } else {
            addMillClearance();
            addMillApproach();
            addMillDepth();
        }
        addEnding();
        return blocks_;
    }

private:
    void addSettings();
    void addTool();
    void addSpindle();
    void addMillClearance();
    void addMillApproach();
    void addMillDepth();
    void addDepth(char letter, const AxisPosition& depth);
    void addLatheApproach();
    void addEnding();

    void add(QByteArray text, QList<qsizetype> lines, Moves moves = Moves::Nothing, bool isSure = true);
    void add(const InForce& word, Moves moves = Moves::Nothing);
    void addMove(QByteArrayView code, QByteArrayView letters, const InForce& with = {});
    const InForce& in(ModalGroup group) const { return state_.in(group); }
    bool isCompensated() const { return in(ModalGroup::CutterComp).isSaid() && !isCompOff(); }
    bool isCompOff() const { return numberOf(in(ModalGroup::CutterComp)) == 400; }
    InForce compensation() const;
    bool hasLength() const;
    InForce length() const;
    bool isFeeding() const;

    const ProgramState& state_;
    QList<StartBlock> blocks_;
};

void Proposal::add(QByteArray text, QList<qsizetype> lines, Moves moves, bool isSure)
{
    std::sort(lines.begin(), lines.end());
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    blocks_.append({std::move(text), std::move(lines), moves, isSure});
}

void Proposal::add(const InForce& word, Moves moves)
{
    if (word.isSaid() && word.isPlain && !word.text.isEmpty()) add(word.text, {word.line}, moves, word.isSure);
}

// Nothing here moves. What is cancelled is cancelled even if the control was left in it.
void Proposal::addSettings()
{
    add(in(ModalGroup::Units));
    add(in(ModalGroup::Plane));
    const auto& distance = in(ModalGroup::Distance);
    const bool hasPlace =
        std::any_of(state_.axes.begin(), state_.axes.end(), [](const auto& a) { return a.isKnown(); });
    if (numberOf(distance) == 900)
        add(distance);
    else if (state_.control != Control::FanucLathe && (distance.isSaid() || hasPlace))
        add("G90", {});
    add(in(ModalGroup::FeedMode));
    add(in(ModalGroup::ReturnLevel));
    add(in(ModalGroup::PathMode));
    add(in(ModalGroup::Turret));
    if (isCompOff())
        add(in(ModalGroup::CutterComp));
    else if (isCompensated())
        add("G40", {});
    const bool hasCycle = state_.hasCycleEnded || state_.cycle.isSaid();
    if (hasCycle && state_.control != Control::FanucLathe) // where the first G0 ends it
        add(state_.control == Control::OkumaLathe ? "G180" : "G80", {});
    // A later G41 or G43 without a number takes the last one.
    if (state_.control == Control::FanucMill) {
        if (!isCompensated()) add(state_.radiusNumber);
        if (!hasLength()) add(state_.lengthNumber);
    }
    add(in(ModalGroup::WorkOffset));
    add(state_.localZero);
}

void Proposal::addTool()
{
    InForce change = state_.tool;
    if (!isLathe(state_.control) && !change.text.isEmpty()) change.text += " M6";
    add(change, Moves::Changer);
    add(state_.nextTool);
}

void Proposal::addSpindle()
{
    add(state_.speedLimit);
    QByteArray text;
    QList<qsizetype> lines;
    bool isSure = true;
    for (const InForce* word : {&in(ModalGroup::SpindleMode), &state_.speed, &in(ModalGroup::Spindle)}) {
        if (!word->isSaid() || !word->isPlain) continue;
        text += text.isEmpty() ? word->text : ' ' + word->text;
        lines.append(word->line);
        isSure = isSure && word->isSure;
    }
    if (!text.isEmpty()) add(text, lines, Moves::Nothing, isSure);
    add(in(ModalGroup::Flood));
    add(in(ModalGroup::Mist));
}

bool Proposal::hasLength() const
{
    const int off = state_.control == Control::OkumaMill ? 530 : 490;
    return in(ModalGroup::ToolLength).isSaid() && numberOf(in(ModalGroup::ToolLength)) != off;
}

InForce Proposal::length() const
{
    InForce length = in(ModalGroup::ToolLength);
    if (!hasLength() || !state_.lengthNumber.isSaid()) return length;
    length.text += ' ' + state_.lengthNumber.text;
    length.isPlain = state_.lengthNumber.isPlain;
    length.isSure = length.isSure && state_.lengthNumber.isSure;
    return length;
}

InForce Proposal::compensation() const
{
    InForce comp = isCompensated() ? in(ModalGroup::CutterComp) : InForce{};
    if (!comp.isSaid() || !state_.radiusNumber.isSaid()) return comp;
    comp.text += ' ' + state_.radiusNumber.text;
    comp.isPlain = state_.radiusNumber.isPlain;
    comp.isSure = comp.isSure && state_.radiusNumber.isSure;
    return comp;
}

// One block for those of the axes whose place is known, with a code that takes effect in the move.
void Proposal::addMove(QByteArrayView code, QByteArrayView letters, const InForce& with)
{
    QByteArray text = code.toByteArray();
    QList<qsizetype> lines;
    if (with.isSaid() && with.isPlain) {
        text += ' ' + with.text;
        lines.append(with.line);
    }
    bool moves = false;
    for (const char letter : letters) {
        const auto& axis = state_.axis(letter);
        if (!axis.isKnown()) continue;
        moves = true;
        text += ' ' + (letter + axis.text);
        lines.append(axis.line);
    }
    if (moves) add(text, lines, Moves::Axes, with.isSure);
}

void Proposal::addMillClearance()
{
    const InForce change = length();
    // With the tool's tip held in place the length belongs behind the turn: turning would move X, Y and Z as well.
    const int code = numberOf(in(ModalGroup::ToolLength));
    const bool turnsFirst = state_.control == Control::FanucMill && (code == 434 || code == 435);
    if (turnsFirst) addMove("G0", "ABC");
    const bool isParked = state_.axis('Z').status == AxisPosition::Status::AtReference;
    if (state_.clearZ.isKnown() && !isParked) {
        QByteArray text = "G0";
        QList<qsizetype> lines{state_.clearZ.line};
        if (change.isSaid() && change.isPlain) {
            text += ' ' + change.text;
            lines.append(change.line);
        }
        add(text + " Z" + state_.clearZ.text, lines, Moves::Axes, change.isSure);
    } else {
        add(change, Moves::Axes);
    }
    if (!turnsFirst) addMove("G0", "ABC");
}

void Proposal::addMillApproach()
{
    const InForce comp = compensation();
    addMove("G0", "XY", comp);
    const bool isTaken = state_.axis('X').isKnown() || state_.axis('Y').isKnown();
    if (!isTaken) add(comp);
    addMove("G0", "UVW");
}

bool Proposal::isFeeding() const
{
    const int motion = numberOf(in(ModalGroup::Motion));
    const bool isTimed = numberOf(in(ModalGroup::FeedMode)) == 930; // there a feed is the time of one block
    return motion >= 10 && motion <= 30 && !isTimed && state_.feed.isSaid() && state_.feed.isPlain;
}

void Proposal::addMillDepth()
{
    const AxisPosition& depth = state_.cycle.isSaid() ? state_.cycleStart : state_.axis('Z');
    if (depth.isKnown() && !(state_.clearZ.isKnown() && state_.clearZ.text == depth.text)) addDepth('Z', depth);
}

// With the feed where one is known: the tool goes into the work.
void Proposal::addDepth(char letter, const AxisPosition& depth)
{
    const bool feeds = isFeeding() && !state_.cycle.isSaid();
    QList<qsizetype> lines{depth.line};
    if (feeds) lines.append(state_.feed.line);
    const QByteArray feed = feeds ? ' ' + state_.feed.text : QByteArray();
    add((feeds ? "G1 " : "G0 ") + (letter + depth.text) + feed, lines, Moves::Axes);
}

// To where the program itself went first with this tool, along the work there, and in last: that holds outside and
// inside a work.
void Proposal::addLatheApproach()
{
    addMove("G0", "ABC");
    addMove("G0", "Y");
    const InForce comp = compensation();
    if (state_.clearX.isKnown() && state_.clearZ.isKnown()) {
        const QByteArray with = comp.isSaid() ? ' ' + comp.text : QByteArray();
        add("G0" + with + " X" + state_.clearX.text + " Z" + state_.clearZ.text,
            {state_.clearX.line, state_.clearZ.line, comp.isSaid() ? comp.line : state_.clearX.line}, Moves::Axes,
            comp.isSure);
    } else {
        add(comp);
    }
    const auto &x = state_.axis('X'), &z = state_.axis('Z');
    const bool goesIn = x.isKnown() && !(state_.clearX.isKnown() && x.text == state_.clearX.text);
    const bool goesAlong = z.isKnown() && !(state_.clearZ.isKnown() && z.text == state_.clearZ.text);
    if (goesAlong && goesIn)
        addMove("G0", "Z");
    else if (goesAlong) // a drill in its hole
        addDepth('Z', z);
    if (goesIn) addDepth('X', x);
}

void Proposal::addEnding()
{
    if (numberOf(in(ModalGroup::Distance)) == 910) add(in(ModalGroup::Distance));
    const auto& motion = in(ModalGroup::Motion);
    QByteArray text = motion.isSaid() ? motion.text : QByteArray();
    QList<qsizetype> lines;
    bool isSure = motion.isSure;
    if (motion.isSaid()) lines.append(motion.line);
    if (state_.feed.isSaid() && state_.feed.isPlain) {
        text += text.isEmpty() ? state_.feed.text : ' ' + state_.feed.text;
        lines.append(state_.feed.line);
        isSure = isSure && state_.feed.isSure;
    }
    if (!text.isEmpty()) add(text, lines, Moves::Nothing, isSure);
    // With K0 the control takes the cycle's words and drills nothing.
    if (state_.cycle.isSaid())
        add(state_.cycle.text + ' ' + state_.cycleWords + " K0", {state_.cycle.line, state_.cycleWordsLine},
            Moves::Nothing, state_.cycle.isSure);
}
} // namespace

QByteArray Restart::text() const
{
    QByteArray text;
    for (const auto& block : blocks)
        text += block.text + '\n';
    return text;
}

Restart proposeRestart(const ProgramState& state)
{
    Restart restart;
    restart.warnings = startWarnings(state);
    if (canStart(state)) restart.blocks = Proposal(state).blocks();
    return restart;
}
