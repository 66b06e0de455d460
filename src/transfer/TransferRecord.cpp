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
    end_ = {};
}

void TransferRecord::beginSend(const MachineRecord& machine, qint64 fromLine)
{
    if (isUnderWay_) return;
    begin(TransferEntry::Direction::Sent, machine);
    entry_.fromLine = fromLine;
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

void TransferRecord::beginReception(const MachineRecord& machine, const QString& path)
{
    if (isUnderWay_) return;
    begin(TransferEntry::Direction::Received, machine);
    head_.clear();
    pathBefore_ = path;
}

void TransferRecord::receivedText(const MachineRecord& machine, const QByteArray& bytes, const QString& path)
{
    for (qsizetype from = 0; from < bytes.size();) {
        beginReception(machine, path);
        const QByteArray rest = bytes.mid(from);
        const qsizetype own = end_.take(rest);
        carry(rest.first(own));
        head_ += rest.first(std::min(own, static_cast<qsizetype>(ProgramName::searchedText) - head_.size()));
        entry_.count += rest.first(own).count('\n');
        from += own;
        if (from < bytes.size()) end({.path = path});
    }
}

void TransferRecord::receivedXModem(const MachineRecord& machine, const QByteArray& bytes, const QString& path)
{
    beginReception(machine, path);
    carry(bytes);
}

bool TransferRecord::isCutShort(bool isArriving) const
{
    const bool isSent = entry_.direction == TransferEntry::Direction::Sent;
    return isSent || isXModem_ || end_.isCutShort() || (isArriving && !end_.isClosed());
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
    const bool isReceived = entry_.direction == TransferEntry::Direction::Received;
    if (isReceived && (isXModem_ ? result.blocks == 0 : !end_.hasText())) return; // noise, or a leader
    hash_.addData(last_);
    entry_.sha256 = hash_.result();
    entry_.ended = QDateTime::currentMSecsSinceEpoch();
    if (!isReceived || result.path != pathBefore_) entry_.path = result.path;
    entry_.program = QFileInfo(entry_.path).fileName();
    if (isReceived && entry_.path.isEmpty())
        entry_.program = ProgramName::number({head_.constData(), static_cast<std::size_t>(head_.size())});
    entry_.outcome = end_.isClosed() ? Outcome::Finished : result.outcome;
    entry_.unit = isXModem_ ? TransferEntry::Unit::Blocks : TransferEntry::Unit::Lines;
    if (isXModem_) entry_.count = result.blocks;
    if (!isXModem_ && !isReceived) entry_.count = result.line - entry_.fromLine;
    if (entry_.outcome != Outcome::Finished) entry_.stoppedAt = isReceived ? entry_.count : result.line;
    NotificationCenter::defaultCenter().post(Notifications::transferRecorded_Event, &view_,
                                             {{Notifications::transferEntry, QVariant::fromValue(entry_)}});
}
