// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>
#include <QTest>

#include <array>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

/// A pseudo-terminal for tests: the program opens the device, the test holds the other end and plays the control. Bytes
/// are translated as on any new terminal until the program sets the line up.
class PtyPair
{
    Q_DISABLE_COPY(PtyPair)
public:
    PtyPair()
    {
        master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) qFatal("no pseudo-terminal");
        devicePath_ = QString::fromLocal8Bit(::ptsname(master_));
        slave_ = ::open(::ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios quiet = line();
        quiet.c_lflag = 0; // a line that nobody has opened yet sends no echo back
        ::tcsetattr(slave_, TCSANOW, &quiet);
    }
    ~PtyPair() { hangUp(); }

    QString devicePath() const { return devicePath_; }

    /// What has arrived by now, without waiting.
    QByteArray read() const
    {
        QByteArray bytes;
        std::array<char, 4096> buffer;
        for (ssize_t count = 0; (count = ::read(master_, buffer.data(), buffer.size())) > 0;)
            bytes.append(buffer.data(), count);
        return bytes;
    }
    /// Runs the event loop until `count` bytes have arrived or `ms` are over; returns what has arrived.
    QByteArray readAtLeast(qsizetype count, int ms = 5000)
    {
        QByteArray bytes = read();
        for (const QDeadlineTimer end(ms); bytes.size() < count && !end.hasExpired(); bytes += read())
            QTest::qWait(1);
        return bytes;
    }
    void write(const QByteArray& bytes)
    {
        for (qsizetype at = 0; at < bytes.size();) {
            const ssize_t count = ::write(master_, bytes.constData() + at, static_cast<std::size_t>(bytes.size() - at));
            count > 0 ? void(at += count) : QTest::qWait(1);
        }
    }
    termios line() const
    {
        termios settings{};
        ::tcgetattr(slave_, &settings);
        return settings;
    }
    /// For a peer that does not set its terminal up before bytes come.
    void makeRaw() const
    {
        termios raw = line();
        ::cfmakeraw(&raw);
        ::tcsetattr(slave_, TCSANOW, &raw);
    }
    int master() const { return master_; }
    int slave() const { return slave_; }
    /// The adapter is pulled out.
    void hangUp()
    {
        ::close(slave_);
        ::close(master_);
        slave_ = master_ = -1;
    }

private:
    int master_ = -1, slave_ = -1; // the slave keeps the device alive while the program closes and opens it
    QString devicePath_;
};
