// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/LrzszPeer.h"
#include "transfer/TransferRig.h"

/// A transfer view, a cable and lrzsz at its other end.
struct LrzszRig {
    static constexpr int openingTicks = 7; // up to the first NAK that a plain peer hears

    explicit LrzszRig(bool send, const Relay::Plan& plan = {})
        : relay({rig.pty.master(), rig.pty.master()}, peer.end(), plan)
    {
        rig.machine->MCFLOW = 3;
        rig.machine->MCTXEOB = "LF";
        rig.start(send);
        rig.child->port->startRxTimer(0.001); // replies that wait for the usual poll would make a long test
    }

    /// rx takes the program in the editor; returns what its file holds when both sides have ended.
    QByteArray sendToRx()
    {
        rig.click("btnSend");
        peer.startReceiving();
        waitForPeer();
        [this] { QTRY_VERIFY(!rig.view->dncRunning()); }();
        return peer.received();
    }

    /// sx sends; returns what the editor holds when sx has ended. `second` is how long the view's seconds last, in s.
    QByteArray takeFromSx(const QByteArray& program, double second = 1)
    {
        peer.startSending(program);
        QByteArray log;
        [&] { QTRY_VERIFY((log += peer.log()).contains("XMODEM receive command now")); }();
        rig.view->iXModemTimeoutCounter = 0;
        for (int tick = 1; tick <= openingTicks; ++tick)
            rig.view->tmrXModem_Tick();
        rig.view->startXModemTimer(second);
        waitForPeer();
        rig.view->tmrXModemTimer.stop();
        return rig.editor->wholeText();
    }

    int longestTransfer = 120'000; // ms; a hang, not a slow machine
    TransferRig rig;
    LrzszPeer peer;
    Relay relay;

private:
    void waitForPeer() { QTRY_VERIFY_WITH_TIMEOUT(!peer.isRunning(), longestTransfer); }
};
