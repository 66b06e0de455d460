// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "benchmarks/BenchLine.h"
#include "benchmarks/BenchView.h"

/// One machine with its line and its transfer view, ready to send.
class BenchMachine
{
    static std::shared_ptr<MachineRecord> settings(qint64 baud, qint64 flow, bool evenParity)
    {
        auto machine = std::make_shared<MachineRecord>();
        machine->MCBAUD = baud;
        machine->MCFLOW = flow;
        machine->MCDBPAR = evenParity ? 2 : 0;
        return machine;
    }

public:
    BenchMachine(qint64 baud, qint64 flow, bool evenParity = false)
        : shown_(line.devicePath(), settings(baud, flow, evenParity))
    {
    }

    void setProgram(const QByteArray& program) { shown_.editor->setProgram(program); }

    BenchLine line;

private:
    BenchView shown_;

public:
    viewTX& view = shown_.view;
};
