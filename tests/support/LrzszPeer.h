// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/PtyPair.h"
#include "support/Relay.h"

#include <QProcess>
#include <QTemporaryDir>

#include <array>

/// lrzsz as the control's side: an 8-bit XModem program that knows nothing of ours. Checksum, not CRC. It has a
/// terminal of its own; a relay joins it and the program's line.
class LrzszPeer
{
public:
    LrzszPeer();
    ~LrzszPeer();
    LrzszPeer(const LrzszPeer&) = delete;
    LrzszPeer& operator=(const LrzszPeer&) = delete;
    Relay::End end() const { return {output_[0], terminal_.master()}; }

    /// rx: takes a program in.
    void startReceiving();
    /// sx: sends these bytes.
    void startSending(const QByteArray& bytes);
    bool isRunning() const { return process_.state() != QProcess::NotRunning; }
    /// Whether it ended by itself and content with the transfer.
    bool isContent() const;
    /// What rx has written to its file.
    QByteArray received() const;
    /// What it had to say.
    QByteArray log() { return process_.readAllStandardError(); }

private:
    void start(const QString& name);
    QString filePath() const { return folder_.filePath(QStringLiteral("program.nc")); }

    PtyPair terminal_;
    // A pipe: at its end lrzsz discards what a pseudo-terminal has not handed over, where a real line has sent it.
    std::array<int, 2> output_{-1, -1};
    QTemporaryDir folder_;
    QProcess process_;
};
