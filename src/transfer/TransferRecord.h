// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"
#include "history/TransferEntry.h"
#include "protocol/ReceivedPrograms.h"
#include "serial/HoldTimes.h"

#include <QCryptographicHash>

#include <optional>

class QObject;

/// Gathers what the history keeps of one transfer at a time, and the programs that come; reports a send at its end,
/// with "transferRecorded_Event". A transfer view owns it and tells it what goes over the line. Main thread.
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
    void beginSend(const MachineRecord& machine, qint64 fromLine, bool isRestart);
    /// These bytes were given to the port.
    void sent(const QByteArray& bytes);

    /// What comes from now on comes from this machine's control.
    void listenTo(const MachineRecord& machine);
    /// A program that has come, and what the history keeps of it.
    struct Received {
        ReceivedPrograms::Program program;
        TransferEntry entry; ///< without a file, unless the view has saved it
        bool isXModem = false;
    };
    /// These bytes of programs as text have arrived; the first begin a reception. Returns the programs that have come
    /// to their end. `path` is the view's file, which belongs to a program only if it changes while that comes.
    QList<Received> receivedText(const MachineRecord& machine, const QByteArray& bytes, const QString& path);
    /// These bytes have arrived by XModem.
    void receivedXModem(const MachineRecord& machine, const QByteArray& bytes, const QString& path);
    /// They brought this piece of the program.
    void receivedBlock(const QByteArray& program) { programs_.take(program); }
    /// Nothing more comes of the program under way; nothing if it was none. By XModem it is whole if it is finished.
    std::optional<Received> endReception(const Result& result);
    bool isProgramUnderWay() const { return programs_.hasText(); }
    /// The control has closed the program that it sends as text; the end of a line may still be missing.
    bool isClosed() const { return programs_.isClosed(); }
    /// That have begun to come since they were forgotten.
    int programs() const { return programs_.count(); }
    void forgetPrograms() { programs_.forgetCount(); }

    bool isUnderWay() const { return isUnderWay_; }
    /// Nothing more goes over the line. How long the control held it, and how many of the bytes given last a stop kept
    /// from it. To be called while the port is still open; further calls do nothing.
    void leaveLine(const HoldTimes::Sum& held, qsizetype unsent);
    /// Reports the send, if one is under way.
    void end(const Result& result);
    void report(const TransferEntry& entry);

private:
    void begin(TransferEntry::Direction direction, const MachineRecord& machine);
    void beginReception(const MachineRecord& machine, const QString& path);
    void carry(const QByteArray& bytes);
    void finish(Outcome outcome);
    Received received(const ReceivedPrograms::Program& program, const Result& result);

    QObject& view_;
    bool isUnderWay_ = false;
    bool hasLeftLine_ = false;
    TransferEntry entry_;
    bool isXModem_ = false;
    QCryptographicHash hash_{QCryptographicHash::Sha256};
    QByteArray last_; // given last and not in the sum yet, since a stop may keep a part of it from the line
    ReceivedPrograms programs_;
    QString pathBefore_;
};
