// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/OrderedQueue.h"
#include "serial/PortError.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

class Descriptor;
class WriteTask;

/// One RS-232 line to a CNC control. The line always carries 8 data bits without hardware parity; 7-bit even parity is
/// made in software on bit 7. A child view owns it. Main thread, but for the body of a write.
///
/// Posts "RxOnComm" (bytes arrived in an empty bytesRxBuffer) and "TxOnComm" (a write is complete), both with this
/// object, on the main thread.
class serialPort : public QObject
{
    Q_OBJECT
    // Shared with writes, which may outlive the port.
    const std::shared_ptr<std::atomic<bool>> stop_ = std::make_shared<std::atomic<bool>>(false);

public:
    explicit serialPort(QObject* parent = nullptr);
    ~serialPort() override;

    QString strRxBuffer;
    QByteArray bytesRxBuffer; ///< received and not yet taken by readBytes
    NotificationCenter* nc = &NotificationCenter::defaultCenter();
    int hPort = 0;           ///< descriptor of the open device; -1 after a failed Open or after Close
    unsigned long Speed = 0; ///< baud
    int DataBits = 7;        ///< informational: the line itself is always set to 8
    int StopBits = 1;        ///< 1 or 2
    int FlowType = 0;        ///< 0 none, 1 XON/XOFF, 2 RTS/CTS, 3 raw 8 bits
    int Parity = 1;          ///< 1 even parity in software, any other value none
    bool rxOnCommNotified = false;
    PortError openError = PortError::None; ///< why the last Open failed
    QString openErrorText;                 ///< the system's words where openError is Other
    /// Abandons a write that waits for the line; every send clears it.
    std::atomic<bool>& stopButtonPressed = *stop_;
    bool XON = true;
    QTimer tmrRxTimer; ///< the receive poll while the port is open

    /// Opens the device exclusively and sets the line up from the properties above. Returns hPort, -1 on any failure.
    int Open(const QString& path);
    /// Stops the poll and lets go of the device, off the main thread where the driver makes closing wait. Returns -1.
    int Close();
    /// A port that was never opened or closed counts as open: only a negative descriptor counts as closed.
    bool isOpen() const { return hPort >= 0; }

    /// Sends bytes in the background, with parity when Parity is 1; "TxOnComm" follows when the driver has taken all.
    void sendBytes(const QByteArray& bytes);
    /// As sendBytes for one byte that is marked with parity whatever Parity is.
    void sendByte(std::uint8_t byte);
    /// Waits until the driver has sent everything, then writes all bytes as they are. False when stopped. Blocks the
    /// caller: the main thread, or one that knows that the main thread leaves the port as it is.
    bool sendData(const QByteArray& bytes);
    /// While stopButtonPressed is set: the bytes that the driver did not take of the sends that the stop cut off, in
    /// order and without parity, so that a continued send can start with exactly these; those sends write nothing more.
    /// Empty when called again, and after a send that was made without asking.
    QByteArray takeUnsentBytes();

    /// After a stop, when the send that it cut off will not be continued: the bytes of it that the driver still holds
    /// never reach the control. Those of a send that ended by itself do.
    void discardCutOff();

    /// Everything received so far; leaves bytesRxBuffer empty.
    QByteArray readBytes();
    QString readData() const { return {}; }
    QString readData(int) const { return {}; }

    /// Changes the flow control of the open line (values as FlowType). Closes the port and returns false on failure.
    bool setFlow(int flow);

    /// The byte with bit 7 set where its count of one bits asks for it. Callers pass 7-bit values; a byte that would
    /// overflow (bit 7 already set and an odd count) ends the program.
    static std::uint8_t SetParityBit(std::uint8_t byte);
    static std::uint8_t ConvertUnicodeToASCII(std::uint32_t) { return 0x20; }

    /// Polls the line every `interval` seconds.
    void startRxTimer(double interval);
    void tmrRx_Tick();

    /// The serial devices present, in the platform's order, into `paths`. 0 on success; otherwise paths stay as they
    /// are.
    int findSerialDevices(QStringList& paths) const;

Q_SIGNALS:
    /// The open device is gone (the adapter was unplugged). Once for each Open; the port stays as it is until Close.
    /// Until it is closed the system can't give the device's name to the adapter when it comes back.
    void lost();

private:
    void noteFailure(const PortFailure& failure);
    bool isCutOff() const;
    void letGo();
    void tellIfLost();
    QByteArray abandonWrites();
    void writeFinished(const std::shared_ptr<WriteTask>& task);

    QTimer nextRead_; // without waiting for the next poll
    std::shared_ptr<Descriptor> device_;
    bool lostTold_ = false;
    OrderedQueue writing_;                                         // a block must not overtake another
    std::vector<std::shared_ptr<WriteTask>> writes_;               // without "TxOnComm" so far, in the order of sending
    const std::shared_ptr<void> alive_ = std::make_shared<char>(); // gone when the port is gone
};
