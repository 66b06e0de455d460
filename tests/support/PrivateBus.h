// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <array>
#include <csignal>
#include <cstdio>

/// A message bus of the test's own. To be made before there is an application, which may connect at once.
class PrivateBus
{
public:
    /// The address goes into that environment variable: DBUS_SESSION_BUS_ADDRESS or DBUS_SYSTEM_BUS_ADDRESS.
    explicit PrivateBus(const char* variable)
        // The system's own rules would let nobody on its bus. Not a QProcess: the thread sanitizer no longer sees the
        // locks of a thread that has started one.
        : daemon_(::popen("exec dbus-daemon --session --print-address=1 --print-pid=1", "r"))
    {
        const QByteArray address = line();
        pid_ = line().toInt();
        if (pid_ <= 0) qFatal("no message bus");
        qputenv(variable, address);
    }
    ~PrivateBus()
    {
        ::kill(pid_, SIGTERM);
        ::pclose(daemon_);
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

private:
    QByteArray line()
    {
        std::array<char, 1024> text{};
        return daemon_ && std::fgets(text.data(), text.size(), daemon_) ? QByteArray(text.data()).trimmed()
                                                                        : QByteArray();
    }

    std::FILE* daemon_;
    int pid_ = 0;
};
