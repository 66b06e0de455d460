// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/LrzszPeer.h"
#include "transfer/TransferRig.h"

// A transfer view, a cable and lrzsz at its other end.
struct LrzszRig {
    explicit LrzszRig(bool send, const Relay::Plan& plan = {})
        : relay({rig.pty.master(), rig.pty.master()}, peer.end(), plan)
    {
        rig.machine->MCFLOW = 3;
        rig.machine->MCTXEOB = "LF";
        rig.start(send);
        rig.port.startRxTimer(0.001); // at the usual poll rate the test would take long
    }

    // rx takes this program; returns what its file holds when both sides have ended.
    QByteArray sendToRx(const QByteArray& program)
    {
        rig.open(program);
        rig.click("btnSend");
        peer.startReceiving();
        requireSoon([this] { return rig.view->booSentXModemBOF(); }, "rx does not begin");
        rig.view->startXModemTimer(0.5); // rx waits a second whether EOT comes alone: not so short that it comes again
        waitForPeer();
        if (rig.view->dncRunning()) rig.view->startXModemTimer(0.02);
        requireSoon([this] { return !rig.view->dncRunning(); }, "the view goes on without rx");
        return peer.received();
    }

    // sx sends; returns what the editor holds when sx has ended. `second` is how long the view's seconds last, in s.
    QByteArray takeFromSx(const QByteArray& program, double second = 1)
    {
        rig.click("btnNew");
        peer.startSending(program);
        QByteArray log;
        requireSoon([&] { return (log += peer.log()).contains("XMODEM receive command now"); }, "sx does not begin");
        for (int tick = rig.view->iXModemTimeoutCounter(); tick < 7; ++tick) // to the first NAK that a plain peer knows
            rig.view->tmrXModem_Tick();
        rig.view->startXModemTimer(second);
        waitForPeer();
        rig.view->tmrXModemTimer.stop();
        return rig.editor->wholeText();
    }

    void waitForPeer()
    {
        constexpr int longestWait = 120'000; // ms; longer is a hang, not a slow machine
        requireSoon([this] { return !peer.isRunning(); }, "the peer does not end", longestWait);
    }

    TransferRig rig;
    LrzszPeer peer;
    Relay relay;
};

inline QByteArray padded(const QByteArray& data, char padding)
{
    return data.leftJustified((data.size() + 127) / 128 * 128, padding);
}

// Something is wrong, the view says. Of a send it always says in a line of its own which bytes it has counted.
inline bool hasNotice(LrzszRig& ends)
{
    return ends.rig.text("lblStatus").count(u'\n') > (ends.rig.text("lblStatus").startsWith("The bytes") ? 1 : 0);
}

// Every character and CR LF, with standard numbers, through lrzsz: the same bytes arrive.
inline void carryEveryCharacter(bool sends, int size)
{
    QByteArray line = "G1 X1.5\r\n"; // a line end by itself would become the machine's end of block
    for (char byte = 0; byte >= 0; ++byte)
        if (byte != '\r' && byte != '\n') line += byte;
    const QByteArray program = line.repeated(size / static_cast<int>(line.size()) + 1).first(size);
    LrzszRig ends(sends);
    ends.rig.machine->MCTXEOB = "CRLF";
    ends.rig.machine->MCXMODEM0 = true;
    QCOMPARE(sends ? ends.sendToRx(program) : ends.takeFromSx(program), padded(program, sends ? ' ' : '\x1A'));
    QVERIFY(ends.peer.isContent());
    QVERIFY2(!hasNotice(ends), qPrintable(ends.rig.text("lblStatus")));
}
