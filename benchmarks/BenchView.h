// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/g.h"
#include "editor/ProgramEditor.h"
#include "transfer/TransferHost.h"
#include "transfer/viewTX.h"

#include <memory>

/// The transfer view of one machine, shown, with its port open on a device. One at a time.
class BenchView
{
    struct Child : ChildView, TransferHost {
        serialPort& machinePort() override { return port; }
        serialPort port;
    };
    const std::shared_ptr<Child> child_ = std::make_shared<Child>();

public:
    BenchView(const QString& device, const std::shared_ptr<MachineRecord>& machine, bool sends = true)
    {
        g::mcIcons = {std::make_shared<MachineRecord>(), machine};
        g::mcChildViews = {std::make_shared<ChildView>(), child_};
        port.Speed = static_cast<unsigned long>(machine->MCBAUD);
        port.FlowType = static_cast<int>(machine->MCFLOW);
        port.Parity = machine->MCDBPAR == 2 ? 1 : 0;
        if (port.Open(device) < 0) qFatal("cannot open the line");
        view.initialize(sends, 1);
        view.resize(900, 600);
        view.show();
        editor = view.findChild<ProgramEditor*>(QStringLiteral("rt1"));
    }
    ~BenchView()
    {
        if (view.dncRunning()) view.btnStop_Click();
        port.Close();
        g::mcIcons.clear();
        g::mcChildViews.clear();
    }
    BenchView(const BenchView&) = delete;
    BenchView& operator=(const BenchView&) = delete;

    serialPort& port = child_->port;
    viewTX view;
    ProgramEditor* editor = nullptr;
};
