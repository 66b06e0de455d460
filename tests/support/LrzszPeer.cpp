// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LrzszPeer.h"

#include <QFile>
#include <QStandardPaths>

#include <fcntl.h>
#include <unistd.h>

LrzszPeer::LrzszPeer()
{
    if (::pipe(output_.data()) != 0) qFatal("no pipe");
    for (const int end : output_)
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
}

LrzszPeer::~LrzszPeer()
{
    process_.kill();
    process_.waitForFinished();
    for (const int end : output_)
        ::close(end);
}

void LrzszPeer::start(const QString& name)
{
    QString program = QStandardPaths::findExecutable(name);
    if (program.isEmpty()) program = QStandardPaths::findExecutable(u'l' + name); // so named beside another XModem
    if (program.isEmpty()) qFatal("lrzsz is not installed");
    process_.setChildProcessModifier([terminal = terminal_.slave(), output = output_[1]] {
        ::dup2(terminal, STDIN_FILENO);
        ::dup2(output, STDOUT_FILENO);
    });
    process_.start(program, {QStringLiteral("--xmodem"), QStringLiteral("-v"), filePath()});
    if (!process_.waitForStarted()) qFatal("%s does not start", qPrintable(program));
}

void LrzszPeer::startReceiving()
{
    QFile::remove(filePath());
    start(QStringLiteral("rx"));
}

void LrzszPeer::startSending(const QByteArray& bytes)
{
    QFile file(filePath());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) qFatal("cannot write the program");
    file.close();
    start(QStringLiteral("sx"));
}

bool LrzszPeer::isContent() const
{
    return !isRunning() && process_.exitStatus() == QProcess::NormalExit && process_.exitCode() == 0;
}

QByteArray LrzszPeer::received() const
{
    QFile file(filePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
