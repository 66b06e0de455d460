// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

#include "config/g.h"
#include "serial/CustomObject.h"

#include <QDeadlineTimer>
#include <QFile>

#include <termios.h>

namespace
{
constexpr int longestWait = 60'000; // ms; a hang, not a slow machine
const QByteArray marker("\x01<marker>\x02");
} // namespace

TransferRig::TransferRig()
{
    machine->MCFLOW = 0;
    machine->MCBAUD = 115200;
    machine->MCNAME = "Mill";
    g::mcIcons = {std::make_shared<MachineRecord>(), machine};
    g::mcChildViews = {std::make_shared<ChildView>(), child};
}

TransferRig::~TransferRig()
{
    releaseLine();
    view.reset();
    child->port->Close();
    g::mcIcons.clear();
    g::mcChildViews.clear();
}

void TransferRig::start(bool send)
{
    auto& port = *child->port;
    port.Speed = static_cast<unsigned long>(machine->MCBAUD);
    port.FlowType = static_cast<int>(machine->MCFLOW);
    port.Parity = 0;
    QVERIFY(port.Open(pty.devicePath()) >= 0);
    // Registered before the view: it hears of a completed write before the view sends the next.
    port.nc->addObserver(&observer_, "TxOnComm", &port, [this](const Notification&) {
        if (++completions == holdAfter_) holdLine();
    });
    view = std::make_unique<viewTX>();
    view->initialize(send, 1);
    view->tmrXModemTimer.stop(); // tests tick by themselves
    view->resize(800, 600);
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view.get()));
    editor = find<ProgramEditor>("rt1");
}

void TransferRig::open(const QByteArray& program)
{
    QFile file(folder_.filePath("program.nc"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(program) == program.size());
    file.close();
    view->openFile(file.fileName());
}

void TransferRig::startWith(const QByteArray& program)
{
    start();
    open(program);
    view->activateWindow();
    editor->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(view.get()));
}

void TransferRig::sendUntilHeld(int writes)
{
    holdAfter_ = completions + writes;
    if (writes == 0) holdLine();
    click("btnSend");
    QTRY_VERIFY(held_ && completions == holdAfter_);
    QTest::qWait(0); // the view has heard of it and given the next write to the port
}

void TransferRig::click(const char* button)
{
    auto* found = find<QAbstractButton>(button);
    QVERIFY2(found->isVisible() && found->isEnabled(), button);
    QTest::mouseClick(found, Qt::LeftButton);
}

QByteArray TransferRig::readUntilIdle()
{
    QByteArray bytes;
    for (const QDeadlineTimer end(longestWait); view->dncRunning() && !end.hasExpired();)
        bytes += pty.readAtLeast(1, 1);
    return bytes + readAll();
}

QByteArray TransferRig::readAll()
{
    // A marker behind all that was sent before, in one write with what is still on its way.
    auto& port = *child->port;
    const bool wasStopped = port.stopButtonPressed.exchange(true);
    const int completed = completions;
    port.sendBytes(port.takeUnsentBytes() + marker);
    QByteArray bytes;
    for (const QDeadlineTimer end(longestWait);
         !(bytes.endsWith(marker) && completions > completed) && !end.hasExpired();)
        bytes += pty.readAtLeast(1, 1);
    port.stopButtonPressed = wasStopped;
    bytes.chop(marker.size());
    return bytes;
}

void TransferRig::deliver(const QByteArray& chunk)
{
    child->port->bytesRxBuffer = chunk;
    child->port->nc->post("RxOnComm", child->port.get());
}

void TransferRig::holdLine()
{
    held_ = CustomObject::ioctl_XOff(child->port->hPort) == 0;
}

void TransferRig::releaseLine()
{
    if (held_) ::tcflow(child->port->hPort, TCOON);
    held_ = false;
}
