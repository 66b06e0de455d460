// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/serialPort.h"

#include "config/NotificationNames.h"
#include "platform/DeviceList.h"
#include "platform/MainQueue.h"
#include "serial/Descriptor.h"
#include "serial/SerialLine.h"
#include "serial/WriteTask.h"

#include <array>
#include <bit>
#include <unistd.h>
#include <utility>
#include <variant>

namespace
{
constexpr double pollInterval = 0.1; // s
constexpr std::size_t readSize = 1024;
constexpr int failed = -1;
} // namespace

serialPort::serialPort(QObject* parent) : QObject(parent)
{
    MainQueue::attachToMainThread();
    connect(&tmrRxTimer, &QTimer::timeout, this, &serialPort::tmrRx_Tick);
    nextRead_.setSingleShot(true);
    connect(&nextRead_, &QTimer::timeout, this, &serialPort::tmrRx_Tick);
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
    device_ = std::get<std::shared_ptr<Descriptor>>(std::move(opened));
    hPort = device_->get();
    lostTold_ = false;
    if (FlowType == 3) {
        DataBits = 8;
        Parity = 0;
    }
    noteFailure(SerialLine::setUp(hPort, {Speed, StopBits, FlowType, Parity == 1}));
    if (openError != PortError::None) return Close();
    startRxTimer(pollInterval);
    return hPort;
}

void serialPort::noteFailure(const PortFailure& failure)
{
    openError = failure.error;
    openErrorText = failure.systemText;
}

int serialPort::Close()
{
    tmrRxTimer.stop();
    letGo();
    return hPort = failed;
}

// The flag alone does not tell: it is also set after a program that went out whole, and what the driver still holds of
// that program must reach the control.
bool serialPort::isCutOff() const
{
    return stopButtonPressed && !writes_.empty();
}

void serialPort::letGo()
{
    const bool cutOff = isCutOff();
    abandonWrites();
    if (!device_) return;
    writing_ = OrderedQueue(); // writes to the next device need not wait until one to this device has ended
    device_->shut(cutOff ? Descriptor::Pending::Discard : Descriptor::Pending::Send);
    // Closing a line that the control holds can take the driver many seconds.
    OrderedQueue().post([device = std::exchange(device_, nullptr)]() mutable { device.reset(); });
}

void serialPort::sendBytes(const QByteArray& bytes)
{
    // A stopped send may not have seen the flag yet: it must not go on once the flag is cleared.
    if (stopButtonPressed) abandonWrites();
    stopButtonPressed = false;
    auto task = std::make_shared<WriteTask>(device_, WriteTask::Line{stop_, Speed, StopBits, Parity == 1}, bytes);
    writes_.push_back(task);
    writing_.post([this, task, alive = std::weak_ptr<void>(alive_)]() mutable {
        if (!task->run()) return;
        MainQueue::post([this, task = std::move(task), alive = std::move(alive)] {
            if (!alive.expired()) writeFinished(task);
        });
    });
}

void serialPort::writeFinished(const std::shared_ptr<WriteTask>& task)
{
    // A stop came first: the write stays among those that the stop cut off, or has been given up with them.
    if (stopButtonPressed || std::erase(writes_, task) == 0) return;
    // A write to a vanished device counts as complete; lost() has to come first.
    const std::weak_ptr<void> alive = alive_;
    tellIfLost();
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
    return WriteTask(device_, {stop_, Speed, StopBits, false}, bytes).run();
}

QByteArray serialPort::takeUnsentBytes()
{
    return stopButtonPressed ? abandonWrites() : QByteArray();
}

void serialPort::discardCutOff()
{
    if (!isCutOff()) return;
    abandonWrites();
    if (device_) device_->discardPending();
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
    if (device_ && SerialLine::setFlow(device_->get(), flow)) return true;
    Close();
    return false;
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
    if (lostTold_ || !device_ || !device_->isLost()) return;
    lostTold_ = true;
    Q_EMIT lost();
}

void serialPort::startRxTimer(double interval)
{
    tmrRxTimer.start(static_cast<int>(interval * 1000));
}

void serialPort::tmrRx_Tick()
{
    if (hPort < 0 || !device_) return;
    const bool wasEmpty = bytesRxBuffer.isEmpty();
    std::array<char, readSize> buffer{};
    const ssize_t count = ::read(hPort, buffer.data(), buffer.size());
    // Neither silence nor an error is worth a report, but an unplugged adapter looks the same.
    if (count < 1) return tellIfLost();
    if (SerialLine::readerStripsParity(Parity == 1)) {
        for (char& byte : buffer)
            byte = static_cast<char>(byte & 0x7F);
    }
    bytesRxBuffer.append(buffer.data(), count);
    // There may be more: at 115200 baud more bytes arrive between two polls than one read takes.
    if (static_cast<std::size_t>(count) == readSize) nextRead_.start(0);
    if (wasEmpty) nc->post(Notifications::RxOnComm, this);
}

int serialPort::findSerialDevices(QStringList& paths) const
{
    const auto devices = DeviceList::serialDevices();
    if (!devices) return failed;
    paths = *devices;
    return 0;
}
