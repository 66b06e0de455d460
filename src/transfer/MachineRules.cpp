// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/MachineRules.h"

#include "config/ControlCodes.h"
#include "config/LineSettings.h"
#include "protocol/Framing.h"

CheckRules MachineRules::check(const MachineRecord& machine)
{
    CheckRules rules;
    rules.stripsComments = machine.MCSTRIPCOMMENTS;
    // XModem sends the program's own bytes and nothing around them, whatever the control.
    if (flowControl(machine.MCFLOW) == FlowControl::XModem) return rules;
    const ControlType type = Framing::controlType(machine.MCMODE);
    if (type == ControlType::Fanuc) rules.maker = CheckRules::Maker::Fanuc;
    if (type == ControlType::Okuma) rules.maker = CheckRules::Maker::Okuma;
    const QString endOfBlock = ControlCodes::endOfBlock(machine.MCTXEOB);
    const QString start = ControlCodes::startOrEnd(machine.MCTXSOT);
    const QString end = ControlCodes::startOrEnd(machine.MCTXEOT);
    rules.headHasPercent = Framing::header(type, start, endOfBlock).contains('%');
    rules.tailHasPercent = Framing::trailer(type, end, endOfBlock).contains('%');
    return rules;
}
