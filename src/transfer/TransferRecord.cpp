// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRecord.h"

#include "config/LineSettings.h"
#include "config/NotificationNames.h"
#include "platform/NotificationCenter.h"
#include "program/ProgramName.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <utility>

void TransferRecord::begin(TransferEntry::Direction direction, const MachineRecord& machine)
{
    isUnderWay_ = true;
    hasLeftLine_ = false;
    entry_ = {};
    entry_.began = QDateTime::currentMSecsSinceEpoch();
    entry_.direction = direction;
    entry_.machine = machine.MCNAME;
    isXModem_ = flowControl(machine.MCFLOW) == FlowControl::XModem;
    hash_.reset();
    last_.clear();
}

void TransferRecord::beginSend(const MachineRecord& machine, qint64 fromLine, bool isRestart)
{
    if (isUnderWay_) return;
    begin(TransferEntry::Direction::Sent, machine);
    entry_.fromLine = fromLine;
    entry_.isRestart = isRestart;
}

void TransferRecord::carry(const QByteArray& bytes)
{
    hash_.addData(std::exchange(last_, bytes));
    entry_.bytes += bytes.size();
}

void TransferRecord::sent(const QByteArray& bytes)
{
    if (isUnderWay_) carry(bytes);
}

void TransferRecord::listenTo(const MachineRecord& machine)
{
    programs_.listenTo(Framing::controlType(machine.MCMODE), flowControl(machine.MCFLOW) == FlowControl::XModem);
}

void TransferRecord::beginReception(const MachineRecord& machine, const QString& path)
{
    if (isUnderWay_) return;
    begin(TransferEntry::Direction::Received, machine);
    pathBefore_ = path;
}

QList<TransferRecord::Received> TransferRecord::receivedText(const MachineRecord& machine, const QByteArray& bytes,
                                                             const QString& path)
{
    if (!programs_.hasText()) isUnderWay_ = false; // what came before the program is none of it
    beginReception(machine, path);
    QList<Received> ended;
    for (const auto& program : programs_.take(bytes)) {
        ended << received(program, {.path = path});
        isUnderWay_ = false;
        beginReception(machine, path);
    }
    if (!programs_.hasText()) isUnderWay_ = false;
    return ended;
}

void TransferRecord::receivedXModem(const MachineRecord& machine, const QByteArray& bytes, const QString& path)
{
    beginReception(machine, path);
    carry(bytes);
}

std::optional<TransferRecord::Received> TransferRecord::endReception(const Result& result)
{
    if (!std::exchange(isUnderWay_, false)) return {};
    if (isXModem_ && result.outcome == Outcome::Finished) programs_.close();
    const auto program = programs_.end();
    if (!program) return {}; // noise, or a leader
    return received(*program, result);
}

TransferRecord::Received TransferRecord::received(const ReceivedPrograms::Program& program, const Result& result)
{
    using End = ReceivedPrograms::End;
    const QByteArray& bytes = program.bytes;
    if (!isXModem_) carry(bytes);
    entry_.count = isXModem_ ? result.blocks : bytes.count('\n');
    if (result.path != pathBefore_) entry_.path = result.path;
    if (entry_.path.isEmpty())
        entry_.program = ProgramName::number({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    auto outcome = program.end == End::Closed ? Outcome::Finished : result.outcome;
    if (program.end == End::Missing && outcome == Outcome::Finished) outcome = Outcome::Stopped;
    finish(outcome);
    if (outcome != Outcome::Finished) entry_.stoppedAt = entry_.count;
    return {program, entry_, isXModem_};
}

void TransferRecord::leaveLine(const HoldTimes::Sum& held, qsizetype unsent)
{
    if (!isUnderWay_ || std::exchange(hasLeftLine_, true)) return;
    const bool isSent = entry_.direction == TransferEntry::Direction::Sent;
    const qsizetype cutOff = isSent ? std::min(unsent, last_.size()) : 0;
    last_.chop(cutOff);
    entry_.bytes -= cutOff;
    entry_.heldFor = held.inAll.count();
    entry_.longestHold = held.longest.count();
}

void TransferRecord::end(const Result& result)
{
    if (!std::exchange(isUnderWay_, false)) return;
    entry_.path = result.path;
    entry_.count = isXModem_ ? result.blocks : result.line - entry_.fromLine;
    finish(result.outcome);
    if (result.outcome != Outcome::Finished) entry_.stoppedAt = result.line;
    report(entry_);
}

void TransferRecord::finish(Outcome outcome)
{
    hash_.addData(last_);
    entry_.sha256 = hash_.result();
    entry_.ended = QDateTime::currentMSecsSinceEpoch();
    if (!entry_.path.isEmpty()) entry_.program = QFileInfo(entry_.path).fileName();
    entry_.outcome = outcome;
    entry_.unit = isXModem_ ? TransferEntry::Unit::Blocks : TransferEntry::Unit::Lines;
}

void TransferRecord::report(const TransferEntry& entry)
{
    NotificationCenter::defaultCenter().post(Notifications::transferRecorded_Event, &view_,
                                             {{Notifications::transferEntry, QVariant::fromValue(entry)}});
}
