// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>

/// One transfer in the history: what went over a machine's line, and how it ended. A plain value.
struct TransferEntry {
    // The numbers of these are stored.
    enum class Direction { Sent = 0, Received = 1 };
    enum class Outcome { Finished = 0, Stopped = 1, Cancelled = 2, Unconfirmed = 3, PortLost = 4 };
    enum class Unit { Lines = 0, Blocks = 1 };

    qint64 key = 0;   ///< its place in the history, which gives it out; later ones are larger
    qint64 began = 0; ///< ms since 1970, UTC
    qint64 ended = 0; ///< the same
    Direction direction = Direction::Sent;
    QString machine; ///< its name at the time
    QString program; ///< name of the program, empty if it had none
    QString path;    ///< of its file, empty if it has none
    qint64 bytes = 0;
    QByteArray sha256; ///< of those bytes as they were on the line, without parity
    Unit unit = Unit::Lines;
    qint64 count = 0;       ///< lines or blocks
    qint64 fromLine = 1;    ///< a send may start in the middle of the program
    bool isRestart = false; ///< it began with start blocks that put the state at that line together
    Outcome outcome = Outcome::Finished;
    qint64 stoppedAt = 0;   ///< the line at which it ended early; 0 if it finished
    qint64 heldFor = 0;     ///< ms that the control held the line, in all
    qint64 longestHold = 0; ///< ms

    bool operator==(const TransferEntry&) const = default;
};

Q_DECLARE_METATYPE(TransferEntry)
