// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "benchmarks/BenchView.h"

#include <QApplication>

#include <array>
#include <atomic>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

/// A control that takes everything at once.
class FastControl
{
public:
    FastControl() : master_(::posix_openpt(O_RDWR | O_NOCTTY))
    {
        if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) qFatal("no pseudo-terminal");
        path_ = QString::fromLocal8Bit(::ptsname(master_));
        slave_ = ::open(::ptsname(master_), O_RDWR | O_NOCTTY); // the reader must see no hang-up
        reader_ = std::thread([this] {
            std::array<char, 65536> buffer;
            while (!ended_ && ::read(master_, buffer.data(), buffer.size()) > 0) {
            }
        });
    }
    ~FastControl()
    {
        ended_ = true;
        [[maybe_unused]] const auto written = ::write(slave_, "", 1); // wakes the reader
        reader_.join();
        if (puncher_.joinable()) puncher_.join();
        ::close(slave_);
        ::close(master_);
    }
    FastControl(const FastControl&) = delete;
    FastControl& operator=(const FastControl&) = delete;

    QString path() const { return path_; }
    void punch(const QByteArray& bytes)
    {
        puncher_ = std::thread([this, bytes] {
            for (qsizetype at = 0; at < bytes.size();) {
                const ssize_t count =
                    ::write(master_, bytes.constData() + at, static_cast<std::size_t>(bytes.size() - at));
                if (count <= 0) return;
                at += count;
            }
        });
    }

private:
    int master_;
    int slave_ = -1;
    QString path_;
    std::atomic<bool> ended_ = false;
    std::thread reader_;
    std::thread puncher_;
};

/// One machine with its view, on a line to a control that takes everything at once.
class BenchStation
{
    static std::shared_ptr<MachineRecord> settings()
    {
        auto machine = std::make_shared<MachineRecord>();
        machine->MCFLOW = 0;
        machine->MCBAUD = 115200;
        return machine;
    }

public:
    explicit BenchStation(const QByteArray& text, bool sends = true) : shown_(control.path(), settings(), sends)
    {
        editor->setProgram(text);
        QApplication::processEvents();
    }

    FastControl control;

private:
    BenchView shown_;

public:
    serialPort& port = shown_.port;
    viewTX& view = shown_.view;
    ProgramEditor* const editor = shown_.editor;
};
