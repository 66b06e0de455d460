// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "simulator/SimulatedControl.h"
#include "support/Relay.h"
#include "transfer/TransferRig.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

/// A transfer view, a cable and a simulated control at its other end that speaks XModem.
struct SimulatedRig {
    /// `sends` is the view; otherwise the control sends this program.
    SimulatedRig(bool sends, const QByteArray& program, const cncsim::XModemSettings& xmodem,
                 const Relay::Plan& plan = {})
        : control(settings(sends, program, xmodem)),
          device(::open(control.devicePath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)),
          relay({rig.pty.master(), rig.pty.master()}, {device, device}, plan)
    {
        termios line{};
        ::tcgetattr(device, &line); // the control's terminal is as the system makes it
        ::cfmakeraw(&line);
        ::tcsetattr(device, TCSANOW, &line);
        rig.machine->MCFLOW = 3;
        rig.machine->MCTXEOB = "LF";
        rig.machine->MCXMODEM0 = xmodem.standardNumbers;
        rig.start(sends);
        rig.port.startRxTimer(0.001);
        if (sends) rig.open(program);
    }
    ~SimulatedRig() { ::close(device); }

    static cncsim::Settings settings(bool sends, const QByteArray& program, const cncsim::XModemSettings& xmodem)
    {
        cncsim::Settings made;
        made.protocol = sends ? cncsim::Protocol::XModemReceive : cncsim::Protocol::XModemSend;
        made.xmodem = xmodem;
        if (!sends) made.punchProgram = program.toStdString();
        return made;
    }

    TransferRig rig;
    cncsim::SimulatedControl control;
    int device;
    Relay relay;
};
