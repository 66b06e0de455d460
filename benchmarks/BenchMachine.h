// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "benchmarks/BenchLine.h"
#include "config/g.h"
#include "editor/ProgramEditor.h"
#include "transfer/TransferHost.h"
#include "transfer/viewTX.h"

#include <memory>

/// One machine with its line and its transfer view, shown, ready to send.
class BenchMachine
{
    struct Child : ChildView, TransferHost {
        serialPort& machinePort() override { return port; }
        serialPort port;
    };
    std::shared_ptr<Child> child_ = std::make_shared<Child>();
    std::shared_ptr<MachineRecord> record_ = std::make_shared<MachineRecord>();

public:
    BenchMachine(qint64 baud, qint64 flow, bool evenParity = false)
    {
        record_->MCBAUD = baud;
        record_->MCFLOW = flow;
        record_->MCDBPAR = evenParity ? 2 : 0;
        g::mcIcons = {std::make_shared<MachineRecord>(), record_};
        g::mcChildViews = {std::make_shared<ChildView>(), child_};
        child_->port.Speed = static_cast<unsigned long>(baud);
        child_->port.FlowType = static_cast<int>(flow);
        child_->port.Parity = evenParity ? 1 : 0;
        if (child_->port.Open(line.devicePath()) < 0) qFatal("cannot open the line");
        view.initialize(true, 1);
        view.resize(900, 600);
        view.show();
    }
    ~BenchMachine()
    {
        if (view.dncRunning()) view.btnStop_Click();
        child_->port.Close();
        g::mcIcons.clear();
        g::mcChildViews.clear();
    }
    BenchMachine(const BenchMachine&) = delete;
    BenchMachine& operator=(const BenchMachine&) = delete;

    void setProgram(const QByteArray& program)
    {
        view.findChild<ProgramEditor*>(QStringLiteral("rt1"))->setProgram(program);
    }

    BenchLine line;
    viewTX view;
};
