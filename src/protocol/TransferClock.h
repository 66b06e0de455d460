// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <optional>

/// Measures one send: what has gone out, whether the line still takes it, and how long the rest will take. Has no clock
/// of its own: `now` is in ms of one monotonic clock. Positions are in the unit that the caller counts the program in.
/// Every call costs the same, however long the program.
class TransferClock
{
public:
    /// What a byte takes on the wire, in ms: start bit, 8 data bits and stop bits. 0 when the speed is not known.
    static double msPerByte(unsigned long baud, int stopBits);

    struct Send {
        double msPerByte = 0;    ///< on the wire
        double bytesPerUnit = 1; ///< bytes on the wire for one unit of the program
        qint64 from = 0;         ///< position of the first unit to send
        qint64 to = 0;           ///< position behind the last unit
    };
    /// How long the send takes at the speed of the line, in ms.
    static double atLineSpeed(const Send& send);

    void begin(qint64 now, const Send& send);
    /// A write of that many bytes has been handed to the port.
    void wrote(qint64 now, qint64 bytes);
    /// The write is complete and the program sent up to `position`. Nothing when no write is under way.
    void completed(qint64 now, qint64 position);
    void stop(qint64 now);
    /// Goes on after a stop: what the stop cut off is written again but counted once.
    void resume(qint64 now);

    /// The write under way takes noticeably longer than its bytes, and those before it, need on the wire.
    bool isHeld(qint64 now) const;
    /// How long that write has been waiting, in ms.
    qint64 waitingFor(qint64 now) const;
    qint64 bytesSent() const { return bytesSent_; }
    /// Time spent sending, without the time between a stop and its continuation.
    qint64 elapsed(qint64 now) const;
    /// Time that the rest will take, from the line's speed at first and the real pace later on; steadied, so ask at
    /// every refresh. Nothing when neither is known.
    std::optional<qint64> remaining(qint64 now);

private:
    Send send_;
    bool running_ = false;
    qint64 startedAt_ = 0;
    qint64 elapsedBefore_ = 0;
    qint64 bytesSent_ = 0;

    // The write under way and the one before it, which the line may still be busy with.
    std::optional<qint64> pendingSince_;
    qint64 pendingBytes_ = 0;
    qint64 bytesBefore_ = 0;

    // The pace: recent time and units, the older the lighter.
    qint64 position_ = 0;
    qint64 paceSince_ = 0;
    double paceTime_ = 0;
    double paceUnits_ = 0;

    std::optional<double> shown_; // remaining time as last shown
    qint64 shownAt_ = 0;
};
