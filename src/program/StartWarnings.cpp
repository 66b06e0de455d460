// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/StartWarnings.h"

namespace
{
QString shown(const QByteArray& text)
{
    return QString::fromUtf8(text);
}

class Warnings
{
public:
    explicit Warnings(const ProgramState& state) : state_(state) {}

    QList<StartWarning> list()
    {
        add(QStringLiteral("Bring the tool clear of the work by hand before you start."));
        warnOfPlace();
        warnOfModes();
        warnOfAxes();
        warnOfGaps();
        warnOfRemarks();
        return list_;
    }

private:
    void add(const QString& text, qsizetype line = 0) { list_.append({text, line}); }
    void warnOfPlace();
    void warnOfModes();
    void warnOfAxes();
    void warnOfGaps();
    void warnOfRemarks();
    int number(ModalGroup group) const
    {
        const InForce& code = state_.in(group);
        return code.isSaid() ? Codes::number(QByteArrayView(code.text).sliced(1)) : -1;
    }

    const ProgramState& state_;
    QList<StartWarning> list_;
};

void Warnings::warnOfPlace()
{
    if (state_.contourLine > 0) {
        add(QStringLiteral("This line belongs to the contour of the cycle on line %1. No start is possible here: "
                           "start at that cycle.")
                .arg(state_.contourLine),
            state_.contourLine);
    }
    const auto& motion = state_.in(ModalGroup::Motion);
    if (isThreading(state_))
        add(QStringLiteral("The tool stands in the thread that %1 of line %2 cuts. No start is possible here: start "
                           "before it.")
                .arg(shown(motion.text))
                .arg(motion.line),
            motion.line);
    const auto& cycle = state_.cycle;
    if (!cycle.isSaid()) return;
    const QString start =
        QStringLiteral("This line belongs to the cycle %1 of line %2. ").arg(shown(cycle.text)).arg(cycle.line);
    if (canStart(state_))
        add(start + QStringLiteral("The start gives the cycle's words with K0, which must not drill; controls that "
                                   "count repetitions with L need L0."),
            cycle.line);
    else
        add(start + QStringLiteral("No start is possible here: start at line %1.").arg(cycle.line), cycle.line);
}

void Warnings::warnOfModes()
{
    const auto& comp = state_.in(ModalGroup::CutterComp);
    if (comp.isSaid() && number(ModalGroup::CutterComp) != 400)
        add(QStringLiteral("Cutter compensation %1 is on: the start switches it on during the approach, not where the "
                           "program did.")
                .arg(shown(comp.text)),
            comp.line);
    const auto& distance = state_.in(ModalGroup::Distance);
    if (number(ModalGroup::Distance) == 910)
        add(QStringLiteral("The program counts from the last position here (%1): a wrong position stays wrong to the "
                           "end.")
                .arg(shown(distance.text)),
            distance.line);
    if (state_.transform.isSaid())
        add(QStringLiteral("%1 turns, scales, mirrors or tilts what follows. No start is possible "
                           "here.")
                .arg(shown(state_.transform.text)),
            state_.transform.line);
    const auto& offset = state_.in(ModalGroup::WorkOffset);
    if (offset.isSaid() && !offset.isPlain)
        add(QStringLiteral("The work offset is worked out (%1). No start is possible here.").arg(shown(offset.text)),
            offset.line);
    if (state_.localZero.isSaid() && !state_.localZero.isPlain)
        add(QStringLiteral("%1 shifts the zero point by a value that is worked out or in another unit. No start is "
                           "possible here.")
                .arg(shown(state_.localZero.text)),
            state_.localZero.line);
    if (number(ModalGroup::FeedMode) == 930)
        add(QStringLiteral("The feed is a time (G93): the start goes to its depth in rapid."),
            state_.in(ModalGroup::FeedMode).line);
    const int length = number(ModalGroup::ToolLength);
    if (state_.control == Control::FanucMill && (length == 434 || length == 435))
        add(QStringLiteral("The tool's tip is held in place while axes turn (%1): the start turns them first.")
                .arg(shown(state_.in(ModalGroup::ToolLength).text)),
            state_.in(ModalGroup::ToolLength).line);
    if (number(ModalGroup::SpindleMode) == 960 && !state_.speedLimit.isSaid())
        add(QStringLiteral("Constant cutting speed (G96) without a highest spindle speed above this line."),
            state_.in(ModalGroup::SpindleMode).line);
}

void Warnings::warnOfAxes()
{
    for (int axis = 0; axis < Axes::count; ++axis) {
        const auto& position = state_.axes[static_cast<std::size_t>(axis)];
        const QString name = QChar::fromLatin1(Axes::letters[axis]);
        if (position.status == AxisPosition::Status::Unknown)
            add(QStringLiteral("Where %1 stands is not known since line %2 (%3). The start does not move it.")
                    .arg(name)
                    .arg(position.line)
                    .arg(shown(position.cause)),
                position.line);
        if (position.status == AxisPosition::Status::AtReference)
            add(QStringLiteral("%1 stands at its reference point since line %2 (%3). The start does not move it.")
                    .arg(name)
                    .arg(position.line)
                    .arg(shown(position.cause)),
                position.line);
    }
}

void Warnings::warnOfGaps()
{
    const bool hasPlace = state_.axis('X').isKnown() || state_.axis('Z').isKnown();
    const auto& length = state_.in(ModalGroup::ToolLength);
    const bool hasLength = length.isSaid() && number(ModalGroup::ToolLength) != (isOkuma(state_.control) ? 530 : 490);
    if (hasLength && length.line < state_.tool.line)
        add(QStringLiteral("%1 was said before the tool change of line %2: it is the length of another tool.")
                .arg(shown(length.text + ' ' + state_.lengthNumber.text).trimmed())
                .arg(state_.tool.line),
            length.line);
    if (!state_.tool.isSure && state_.tool.isSaid())
        add(QStringLiteral("Which tool is in the spindle is not sure since line %1.").arg(state_.tool.line),
            state_.tool.line);
    if (!hasPlace) return; // the start moves nothing that could go wrong
    if (state_.control != Control::FanucLathe && !state_.in(ModalGroup::Distance).isSaid())
        add(QStringLiteral("Neither G90 nor G91 is said above this line: its positions are read as absolute."));
    if (!state_.tool.isSaid() || state_.tool.text.isEmpty())
        add(QStringLiteral("No tool is called above this line: the start calls none."), state_.tool.line);
    if (isLathe(state_.control)) {
        if (!state_.clearX.isKnown())
            add(QStringLiteral("The program went to no place in rapid with this tool: the start goes along the work "
                               "first, then in."));
        return;
    }
    if (!state_.clearZ.isKnown())
        add(QStringLiteral("No clear height is known with this tool: the start crosses at the height at which the "
                           "tool stands."));
    if (!state_.in(ModalGroup::ToolLength).isSaid()) add(QStringLiteral("No tool length is said above this line."));
}

void Warnings::warnOfRemarks()
{
    const auto sentence = [](RemarkKind kind) {
        switch (kind) {
        case RemarkKind::NotUnderstood:
            return QStringLiteral("Not understood: %1. The start leaves it out.");
        case RemarkKind::Call:
            return QStringLiteral(
                "%1 may have changed what was said before it. Blocks marked as not sure need a look.");
        case RemarkKind::Jump:
            return QStringLiteral("%1 decides which lines run, and how often. Blocks marked as not sure need a look.");
        case RemarkKind::Variable:
            return QStringLiteral("%1: the value is not in the program. The start does not set it.");
        case RemarkKind::BlockSkip:
            return QStringLiteral("Lines that begin with %1 run or not, as the switch at the control says.");
        case RemarkKind::StoresData:
            return QStringLiteral("%1 writes into the control's memory. The start does not repeat it.");
        case RemarkKind::ZeroShift:
            return QStringLiteral("%1 set the zero point by where the tool stood. The start can't restore it: check "
                                  "the zero point.");
        case RemarkKind::Transform:
            return QString(); // told where it is still on
        case RemarkKind::AnotherProgram:
            return QStringLiteral("A program ends above and another begins here %1: what its caller sets is not "
                                  "known.");
        }
        return QString();
    };
    constexpr int mostOfAKind = 5; // the rest is in the table of the state
    std::array<int, remarkKindCount> told{};
    for (const Remark& remark : state_.remarks) {
        const QString text = sentence(remark.kind);
        if (text.isEmpty() || ++told[static_cast<std::size_t>(remark.kind)] > mostOfAKind) continue;
        const QString what = shown(remark.text).trimmed();
        add(text.arg(what).replace(QLatin1String(" :"), QLatin1String(":")), remark.lastLine);
    }
}
} // namespace

// Without the cycle, the zero point or the transformation the next block would go somewhere else, in rapid perhaps.
bool canStart(const ProgramState& state)
{
    const bool hasCycle = !state.cycle.isSaid() || (state.control == Control::FanucMill && state.cycle.isPlain);
    const auto& offset = state.in(ModalGroup::WorkOffset);
    const bool hasZero = (!state.localZero.isSaid() || state.localZero.isPlain) && (!offset.isSaid() || offset.isPlain);
    return hasCycle && hasZero && !isThreading(state) && state.contourLine == 0 && !state.transform.isSaid();
}

QList<StartWarning> startWarnings(const ProgramState& state)
{
    return Warnings(state).list();
}
