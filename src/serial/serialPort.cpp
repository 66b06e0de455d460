// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/serialPort.h"

#include "config/NotificationNames.h"
#include "platform/DeviceList.h"
#include "platform/MainQueue.h"
#include "serial/LineTraffic.h"
#include "serial/SerialLine.h"
#include "serial/WriteTask.h"

#include <QSocketNotifier>

#include <bit>
#include <chrono>
#include <utility>
#include <variant>

namespace
{
constexpr double pollInterval = 0.1; // s
constexpr int failed = -1;
} // namespace

serialPort::serialPort(QObject* parent) : QObject(parent)
{
    MainQueue::attachToMainThread();
    connect(&tmrRxTimer, &QTimer::timeout, this, &serialPort::tmrRx_Tick);
}

serialPort::~serialPort()
{
    letGo();
}

int serialPort::Open(const QString& path)
{
    auto opened = SerialLine::openExclusive(path);
    letGo(); // callers close first; a device that is still held must not leak
    if (const auto* failure = std::get_if<PortFailure>(&opened)) {
        noteFailure(*failure);
        return hPort = failed;
    }
    auto device = std::get<std::shared_ptr<Descriptor>>(std::move(opened));
    hPort = device->get();
    lostTold_ = false;
    if (FlowType == 3) {
        DataBits = 8;
        Parity = 0;
    }
    const bool isSetUp = setUpLine();
    const LineTraffic::Line line{Speed, StopBits, SerialLine::readerStripsParity(Parity == 1), FlowType};
    line_ = std::make_shared<LineTraffic>(std::move(device), line);
    if (!isSetUp) return Close();
    startRxTimer(pollInterval);
    if (FlowType == 3) wakeOnArrival();
    return hPort;
}

// Each XModem block waits for an answer: found by the poll alone, the answers would take more time than the blocks.
void serialPort::wakeOnArrival()
{
    arrival_ = std::make_unique<QSocketNotifier>(hPort, QSocketNotifier::Read);
    connect(arrival_.get(), &QSocketNotifier::activated, this, [this] {
        if (line_->device().isLost()) arrival_->setEnabled(false); // it would never be silent again
        tmrRx_Tick();
    });
}

bool serialPort::setUpLine()
{
    noteFailure(SerialLine::setUp(hPort, {Speed, StopBits, FlowType, Parity == 1}));
    if (openError != PortError::None) return false;
    ModemLines::raise(hPort, FlowType != 2);
    return true;
}

bool serialPort::restoreLine()
{
    if (!line_ || setUpLine()) return true;
    Close();
    return false;
}

void serialPort::noteFailure(const PortFailure& failure)
{
    openError = failure.error;
    openErrorText = failure.systemText;
}

int serialPort::Close()
{
    tmrRxTimer.stop();
    const QByteArray arrived = line_ ? line_->takeArrived() : QByteArray(); // read by a write
    letGo();
    hPort = failed;
    noteArrived(arrived);
    return failed;
}

void serialPort::noteArrived(const QByteArray& bytes)
{
    if (bytes.isEmpty()) return;
    const bool wasEmpty = bytesRxBuffer.isEmpty();
    bytesRxBuffer += bytes;
    if (wasEmpty) nc->post(Notifications::RxOnComm, this);
}

// The flag alone does not tell: a stop may come when all writes are complete, and what the driver still holds of them
// must reach the control.
bool serialPort::isCutOff() const
{
    return stopButtonPressed && !writes_.empty();
}

void serialPort::letGo()
{
    const bool cutOff = isCutOff();
    abandonWrites();
    if (!line_) return;
    if (arrival_) {
        arrival_->setEnabled(false);
        arrival_.release()->deleteLater(); // we may be in its signal
    }
    writing_ = OrderedQueue(); // writes to the next device need not wait until one to this device has ended
    line_->device().shut(cutOff ? Descriptor::Pending::Discard : Descriptor::Pending::Send);
    // Closing a line that the control holds can take the driver many seconds.
    OrderedQueue().post([line = std::exchange(line_, nullptr)]() mutable { line.reset(); });
}

void serialPort::sendBytes(const QByteArray& bytes)
{
    // A stopped send may not have seen the flag yet: it must not go on once the flag is cleared.
    if (stopButtonPressed) abandonWrites();
    stopButtonPressed = false;
    auto task = std::make_shared<WriteTask>(line_, stop_, Parity == 1, bytes);
    writes_.push_back(task);
    writing_.post([this, task, alive = std::weak_ptr<void>(alive_)]() mutable {
        task->run([&] {
            MainQueue::post([this, task, alive = std::move(alive)] {
                if (!alive.expired()) writeFinished(task);
            });
        });
    });
}

void serialPort::writeFinished(const std::shared_ptr<WriteTask>& task)
{
    // A stop came first: the write stays among those that the stop cut off, or has been given up with them.
    if (stopButtonPressed || std::erase(writes_, task) == 0) return;
    // A write to a vanished device counts as complete; lost() has to come first.
    const std::weak_ptr<void> alive = alive_;
    if (arrival_) tmrRx_Tick(); // the write has read what arrived meanwhile, so nothing else wakes us for it
    if (!alive.expired()) tellIfLost();
    if (alive.expired()) return;
    nc->post(Notifications::TxOnComm, this);
}

void serialPort::sendByte(std::uint8_t byte)
{
    // With Parity 1 sendBytes marks it a second time. Controls know our replies like that, so it stays.
    sendBytes(QByteArray(1, static_cast<char>(SetParityBit(byte))));
}

bool serialPort::sendData(const QByteArray& bytes)
{
    return WriteTask(line_, stop_, false, bytes).run();
}

QByteArray serialPort::takeUnsentBytes()
{
    return stopButtonPressed ? abandonWrites() : QByteArray();
}

qsizetype serialPort::unsentCount() const
{
    qsizetype count = 0;
    for (const auto& write : writes_)
        count += write->unsentCount();
    return count;
}

void serialPort::discardCutOff()
{
    if (!isCutOff()) return;
    abandonWrites();
    if (line_) line_->device().discardPending();
}

QByteArray serialPort::abandonWrites()
{
    QByteArray unsent;
    for (const auto& write : std::exchange(writes_, {}))
        unsent += write->abandon();
    return unsent;
}

QByteArray serialPort::readBytes()
{
    return std::exchange(bytesRxBuffer, {});
}

bool serialPort::setFlow(int flow)
{
    if (line_) noteFailure(SerialLine::setFlow(hPort, flow));
    if (!line_ || openError != PortError::None) {
        Close();
        return false;
    }
    // Without flow control in the wait for a start signal, XON and XOFF still tell whether the control is ready.
    line_->setFlow(flow, FlowType == 1);
    return true;
}

std::optional<qint64> serialPort::heldFor() const
{
    const auto since = line_ ? line_->heldSince() : std::nullopt;
    if (!since) return {};
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - *since).count();
}

HoldTimes::Sum serialPort::holdTimes() const
{
    return line_ ? line_->holdTimes() : HoldTimes::Sum();
}

void serialPort::restartHoldTimes()
{
    if (line_) line_->restartHoldTimes();
}

void serialPort::sendOn(qint64 heldFor)
{
    if (line_) line_->release(std::chrono::milliseconds(heldFor));
}

void serialPort::askModemLines()
{
    if (!line_) return Q_EMIT modemLinesRead({});
    if (std::exchange(isAskingLines_, true)) return;
    // In a queue of its own, because a write can be held for ever.
    OrderedQueue().post([this, line = line_, asked = std::weak_ptr(line_), alive = std::weak_ptr(alive_)]() mutable {
        const auto lines = ModemLines::read(line->device().get());
        line.reset(); // the last one to hold the device closes it, and that must not be the main thread
        MainQueue::post([this, lines, asked, alive] {
            if (alive.expired()) return;
            isAskingLines_ = false;
            const bool isSame = !asked.owner_before(line_) && !line_.owner_before(asked);
            if (line_ && isSame) Q_EMIT modemLinesRead(lines);
        });
    });
}

std::uint8_t serialPort::SetParityBit(std::uint8_t byte)
{
    const int ones = std::popcount(byte);
    // A count of 0 is treated as odd on purpose: controls expect the NULs of a leader as 0x80.
    if (ones == 2 || ones == 4 || ones == 6) return byte;
    if (byte >= 0x80) qFatal("parity requested for a byte that has bit 7 set already: %d", byte);
    return static_cast<std::uint8_t>(byte + 0x80);
}

void serialPort::tellIfLost()
{
    if (lostTold_ || !line_ || !line_->device().isLost()) return;
    lostTold_ = true;
    Q_EMIT lost();
}

void serialPort::startRxTimer(double interval)
{
    tmrRxTimer.start(static_cast<int>(interval * 1000));
}

void serialPort::tmrRx_Tick()
{
    if (hPort < 0 || !line_) return;
    line_->look();
    const QByteArray arrived = line_->takeArrived();
    // An unplugged adapter reads as a line on which nothing arrives.
    if (arrived.isEmpty()) return tellIfLost();
    noteArrived(arrived);
}

int serialPort::findSerialDevices(QStringList& paths) const
{
    const auto devices = DeviceList::present();
    if (!devices) return failed;
    paths.clear();
    for (const auto& device : *devices)
        paths.append(device.path);
    return 0;
}
