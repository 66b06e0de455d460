// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <termios.h>

/// A pseudo-terminal for tests: the program opens the device, the test holds the other end and plays the control.
class PtyPair
{
public:
    PtyPair();
    ~PtyPair();
    PtyPair(const PtyPair&) = delete;
    PtyPair& operator=(const PtyPair&) = delete;

    QString devicePath() const { return devicePath_; }

    /// What has arrived by now, without waiting.
    QByteArray read();
    /// Runs the event loop until `count` bytes have arrived or `ms` are over; returns what has arrived.
    QByteArray readAtLeast(qsizetype count, int ms = 5000);
    void write(const QByteArray& bytes);
    /// The device's line settings as they are now.
    termios line() const;
    /// The two ends, for a program or a relay that uses them by itself.
    int master() const { return master_; }
    int slave() const { return slave_; }
    /// The adapter is pulled out.
    void hangUp();

private:
    int master_ = -1;
    int slave_ = -1; // keeps the device alive while the program closes and opens it
    QString devicePath_;
};
