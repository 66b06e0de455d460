// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/OpenPort.h"

#include <QElapsedTimer>
#include <QTest>

OpenPort::OpenPort(int flow, int parity)
{
    auto& nc = NotificationCenter::defaultCenter();
    nc.addObserver(&observer_, QStringLiteral("TxOnComm"), port.get(), [this](const Notification&) { ++txCount; });
    nc.addObserver(&observer_, QStringLiteral("RxOnComm"), port.get(), [this](const Notification&) { ++rxCount; });
    port->Speed = 9600;
    port->FlowType = flow;
    port->Parity = parity;
    if (port->Open(control.devicePath()) < 0) qFatal("the port does not open");
}

void OpenPort::hold()
{
    // The byte after XOFF arrives once the line has seen the XOFF.
    control.write(port->Parity == 1 ? "\x93Z" : "\x13Z");
    port->startRxTimer(0.001); // the test need not wait for a poll each time
    QTRY_COMPARE(port->bytesRxBuffer, QByteArray("Z"));
    port->readBytes();
}

QByteArray OpenPort::readWithoutEvents(qsizetype count)
{
    QByteArray bytes;
    QElapsedTimer timer;
    timer.start();
    while (bytes.size() < count && timer.elapsed() < 5000) {
        bytes += control.read();
        QTest::qSleep(1);
    }
    return bytes;
}
