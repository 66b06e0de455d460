// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serial/serialPort.h"
#include "support/PtyPair.h"

#include <QTest>

#include <memory>

/// A port that is open on a pseudo-terminal. The test plays the control; notifications are counted.
class OpenPort
{
public:
    explicit OpenPort(int flow = 0, int parity = 0, unsigned long speed = 9600)
    {
        port->nc->addObserver(&observer_, "TxOnComm", port.get(), [this](const Notification&) { ++txCount; });
        port->nc->addObserver(&observer_, "RxOnComm", port.get(), [this](const Notification&) { ++rxCount; });
        port->Speed = speed;
        port->FlowType = flow;
        port->Parity = parity;
        if (port->Open(control.devicePath()) < 0) qFatal("the port does not open");
    }

    /// Sends the control's XOFF and returns when the line has seen it: then the byte after it arrives.
    void hold()
    {
        control.write(port->Parity == 1 ? "\x93Z" : "\x13Z");
        port->startRxTimer(0.001); // the test need not wait for a poll each time
        QTRY_COMPARE(port->bytesRxBuffer, QByteArray("Z"));
        port->readBytes();
    }
    void release() { control.write("\x11"); }
    /// Sends a line and returns when it has arrived; its completion waits for the event loop.
    void sendWithoutEvents()
    {
        port->sendBytes("N10\n");
        for (QByteArray arrived; arrived != "N10\n"; arrived += control.read())
            QTest::qSleep(1);
    }

    PtyPair control;
    std::unique_ptr<serialPort> port = std::make_unique<serialPort>();
    int txCount = 0, rxCount = 0; ///< "TxOnComm" and "RxOnComm" so far

private:
    QObject observer_;
};
