// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"
#include "history/TransferEntry.h"
#include "protocol/ProgramEnd.h"
#include "serial/HoldTimes.h"

#include <QCryptographicHash>

class QObject;

/// Gathers what the history keeps of one transfer at a time and reports it at its end, with "transferRecorded_Event". A
/// transfer view owns it and tells it what goes over the line. Main thread.
class TransferRecord
{
public:
    using Outcome = TransferEntry::Outcome;

    /// What only the view knows at the end.
    struct Result {
        Outcome outcome = Outcome::Finished;
        qint64 line = 0;   ///< the first that a send has not sent
        qint64 blocks = 0; ///< of XModem
        QString path;      ///< of the program's file
    };

    explicit TransferRecord(QObject& view) : view_(view) {}

    /// A send begins with that line. Nothing while one is under way.
    void beginSend(const MachineRecord& machine, qint64 fromLine);
    /// These bytes were given to the port.
    void sent(const QByteArray& bytes);

    /// These bytes of a program as text have arrived; the first begin a reception. A program that was closed has ended
    /// when the next one begins. `path` is the view's file, which belongs to the program only if it changes from now
    /// on.
    void receivedText(const MachineRecord& machine, const QByteArray& bytes, const QString& path);
    /// These bytes have arrived by XModem.
    void receivedXModem(const MachineRecord& machine, const QByteArray& bytes, const QString& path);
    /// The control has closed the program that it sent as text.
    bool isClosed() const { return isUnderWay_ && end_.isClosed(); }
    /// If nothing more can come of it: the end is missing.
    bool isCutShort(bool isArriving) const;

    bool isUnderWay() const { return isUnderWay_; }
    /// Nothing more goes over the line. How long the control held it, and how many of the bytes given last a stop kept
    /// from it. To be called while the port is still open; further calls do nothing.
    void leaveLine(const HoldTimes::Sum& held, qsizetype unsent);
    /// Reports the transfer, if one is under way. A reception that brought no program is none.
    void end(const Result& result);

private:
    void begin(TransferEntry::Direction direction, const MachineRecord& machine);
    void beginReception(const MachineRecord& machine, const QString& path);
    void carry(const QByteArray& bytes);

    QObject& view_;
    bool isUnderWay_ = false;
    bool hasLeftLine_ = false;
    TransferEntry entry_;
    bool isXModem_ = false;
    QCryptographicHash hash_{QCryptographicHash::Sha256};
    QByteArray last_; // given last and not in the sum yet, since a stop may keep a part of it from the line
    ProgramEnd end_;
    QByteArray head_; // of what has arrived: as much of it as its name is looked for in
    QString pathBefore_;
};
