// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/PtyPair.h"
#include "support/Relay.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

/// lrzsz as the control's side: an 8-bit XModem program that knows nothing of ours. Checksum, not CRC. It has a
/// terminal of its own; a relay joins it and the program's line.
class LrzszPeer
{
public:
    LrzszPeer()
    {
        if (::pipe2(output_.data(), O_CLOEXEC) != 0) qFatal("no pipe");
        terminal_.makeRaw();
    }
    ~LrzszPeer()
    {
        process_.kill();
        process_.waitForFinished();
        for (const int end : output_)
            ::close(end);
    }
    Relay::End end() const { return {output_[0], terminal_.master()}; }

    void startReceiving()
    {
        QFile::remove(filePath());
        start(QStringLiteral("rx"));
    }
    void startSending(const QByteArray& bytes)
    {
        QFile file(filePath());
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) qFatal("cannot write the program");
        file.write(bytes);
        start(QStringLiteral("sx"));
    }
    bool isRunning() const { return process_.state() != QProcess::NotRunning; }
    bool isContent() const { return !isRunning() && process_.exitCode() == 0; }
    QByteArray received() const
    {
        QFile file(filePath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QByteArray log() { return process_.readAllStandardError(); }

private:
    void start(const QString& name)
    {
        const bool isPlain = !QStandardPaths::findExecutable(name).isEmpty(); // else so named beside another XModem
        process_.setChildProcessModifier([this] {
            ::dup2(terminal_.slave(), STDIN_FILENO);
            ::dup2(output_[1], STDOUT_FILENO);
        });
        process_.start(isPlain ? name : u'l' + name, {QStringLiteral("--xmodem"), QStringLiteral("-v"), filePath()});
        if (!process_.waitForStarted()) qFatal("lrzsz does not start: is it installed?");
    }
    QString filePath() const { return folder_.filePath(QStringLiteral("program.nc")); }

    const PtyPair terminal_;
    // A pipe: at its end lrzsz discards what a pseudo-terminal has not handed over, where a real line has sent it.
    std::array<int, 2> output_{-1, -1};
    QTemporaryDir folder_;
    QProcess process_;
};
