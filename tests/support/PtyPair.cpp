// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PtyPair.h"

#include <QElapsedTimer>
#include <QTest>

#include <array>
#include <fcntl.h>
#include <unistd.h>

PtyPair::PtyPair()
{
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) qFatal("no pseudo-terminal");
    const char* name = ::ptsname(master_);
    devicePath_ = QString::fromLocal8Bit(name);
    slave_ = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw{};
    ::tcgetattr(slave_, &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(slave_, TCSANOW, &raw);
}

PtyPair::~PtyPair()
{
    hangUp();
}

void PtyPair::hangUp()
{
    if (slave_ >= 0) ::close(slave_);
    if (master_ >= 0) ::close(master_);
    slave_ = master_ = -1;
}

QByteArray PtyPair::read()
{
    QByteArray bytes;
    std::array<char, 4096> buffer;
    for (ssize_t count = 0; (count = ::read(master_, buffer.data(), buffer.size())) > 0;)
        bytes.append(buffer.data(), count);
    return bytes;
}

QByteArray PtyPair::readAtLeast(qsizetype count, int ms)
{
    QByteArray bytes;
    QElapsedTimer timer;
    timer.start();
    while (bytes.size() < count && timer.elapsed() < ms) {
        bytes += read();
        if (bytes.size() < count) QTest::qWait(1);
    }
    return bytes;
}

void PtyPair::write(const QByteArray& bytes)
{
    for (qsizetype at = 0; at < bytes.size();) {
        const ssize_t count = ::write(master_, bytes.constData() + at, static_cast<std::size_t>(bytes.size() - at));
        if (count > 0) at += count;
        if (count <= 0) QTest::qWait(1);
    }
}

termios PtyPair::line() const
{
    termios settings{};
    ::tcgetattr(slave_, &settings);
    return settings;
}
