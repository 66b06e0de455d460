// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/OrderedQueue.h"
#include "serial/HoldTimes.h"
#include "serial/ModemLines.h"
#include "serial/PortError.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class LineTraffic;
class QSocketNotifier;
class WriteTask;

/// One RS-232 line to a CNC control. The line always carries 8 data bits without hardware parity; 7-bit even parity is
/// made in software on bit 7. A child view owns it.
///
/// Threads: every function is for the main thread. All return at once but two: Open may wait half a second for an
/// earlier close to end, and sendData blocks. A background thread writes what is sent, in the order of the calls, and
/// touches nothing of this object.
///
/// Notifications, on the main thread, posted on nc with this object:
/// - "RxOnComm": bytes arrived while bytesRxBuffer was empty.
/// - "TxOnComm": the driver has been given all bytes of a send, the last of them some milliseconds before they are out.
///
/// Flow control: the program itself stops writing when the control says so, whatever the adapter's driver does; no more
/// than a few characters are on their way then.
///
/// Errors:
/// - Open returns -1 and openError says why.
/// - setFlow and restoreLine return false, openError says why, and the port is closed.
/// - A device that vanishes is reported once, by lost(), before any "TxOnComm" of a send that failed with it.
/// - Any other error of a write counts as a complete send, and one of a read as no bytes: nobody could act on them.
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
    int FlowType = 0;        ///< 0 none, 1 XON/XOFF, 2 RTS/CTS, 3 raw 8 bits (Open sets DataBits 8 and Parity 0)
    int Parity = 1;          ///< 1 even parity in software, any other value none
    bool rxOnCommNotified = false;
    PortError openError = PortError::None; ///< why the last Open failed, or what closed the port since
    QString openErrorText;                 ///< the system's words where openError is Other
    /// Set by the operator's Stop: gives up the sends that wait for the line. The next send clears it.
    std::atomic<bool>& stopButtonPressed = *stop_;
    bool XON = true;
    QTimer tmrRxTimer; ///< the receive poll while the port is open; with FlowType 3 what arrives does not wait for it

    /// Opens the device for us alone and sets the line up from the properties above. Returns hPort.
    int Open(const QString& path);
    /// Stops the poll and lets go of the device; a driver that is slow to close holds nobody up. Returns -1.
    int Close();
    /// Also true before the first Open: only a negative descriptor counts as closed.
    bool isOpen() const { return hPort >= 0; }

    /// Sends bytes, with parity when Parity is 1.
    void sendBytes(const QByteArray& bytes);
    /// Sends one byte, with parity whatever Parity is.
    void sendByte(std::uint8_t byte);
    /// Writes all bytes as they are, no faster than the line carries them. False when stopped.
    /// Another thread may call it if the main thread neither opens nor closes the port meanwhile.
    bool sendData(const QByteArray& bytes);
    /// While stopButtonPressed is set: the bytes that a stop kept from the driver, in order and without parity, so that
    /// a continued send can start with exactly these. The sends that they belong to write nothing more. Empty when
    /// called again, or after the next send.
    QByteArray takeUnsentBytes();

    /// While stopButtonPressed is set: how many bytes takeUnsentBytes would return.
    qsizetype unsentCount() const;

    /// After a stop, when the send that was cut off will not be continued: its bytes that the driver still holds never
    /// reach the control. Those of a send that was complete do.
    void discardCutOff();

    /// Everything received so far; leaves bytesRxBuffer empty.
    QByteArray readBytes();
    QString readData() const { return {}; }
    QString readData(int) const { return {}; }

    /// Changes the flow control of the open line (values as FlowType) and leaves FlowType as it is. On a line with
    /// FlowType 1 a hold outlasts a change between 0 and 1.
    bool setFlow(int flow);
    /// Sets the line up as Open did if another program has changed it since. False, and the port is closed, if that
    /// fails. Before a send: a program that asks every serial port for a modem does that, for one.
    bool restoreLine();
    /// How long the control has been holding the line, by XOFF or CTS, in ms; nothing while it does not.
    std::optional<qint64> heldFor() const;
    /// How long it has held the line since restartHoldTimes, in all and at the longest. Nothing once the port is
    /// closed.
    HoldTimes::Sum holdTimes() const;
    void restartHoldTimes();
    /// Ends a hold by XOFF that has lasted for at least `heldFor` ms: the operator has seen that the control is ready
    /// and its XON was lost. A younger hold is another one.
    void sendOn(qint64 heldFor);

    /// Has the modem lines read in the background; modemLinesRead() brings them. Asking again before that does nothing.
    void askModemLines();

    /// The byte with even parity in bit 7; NUL becomes 0x80. For 7-bit values: a byte with bit 7 set whose count of one
    /// bits is odd or 8 ends the program.
    static std::uint8_t SetParityBit(std::uint8_t byte);
    static std::uint8_t ConvertUnicodeToASCII(std::uint32_t) { return 0x20; }

    /// Polls the line every `interval` seconds.
    void startRxTimer(double interval);
    void tmrRx_Tick();

    /// Puts the serial devices present into `paths`, in the platform's order. 0 on success; otherwise `paths` stays as
    /// it is.
    int findSerialDevices(QStringList& paths) const;

Q_SIGNALS:
    /// The open device is gone: its adapter was unplugged. Emitted at most once for each Open. The port stays open
    /// until Close, and until then the system cannot give the device's name back to the adapter.
    void lost();
    /// The modem lines of the open device; nothing if it has none or none is open.
    void modemLinesRead(const std::optional<ModemLines>& lines);

private:
    bool setUpLine();
    void noteArrived(const QByteArray& bytes);
    void noteFailure(const PortFailure& failure);
    bool isCutOff() const;
    void letGo();
    void wakeOnArrival();
    void tellIfLost();
    QByteArray abandonWrites();
    void writeFinished(const std::shared_ptr<WriteTask>& task);

    std::shared_ptr<LineTraffic> line_;        // of the open device
    std::unique_ptr<QSocketNotifier> arrival_; // with FlowType 3
    bool lostTold_ = false;
    bool isAskingLines_ = false;
    OrderedQueue writing_;                                         // blocks must not overtake each other
    std::vector<std::shared_ptr<WriteTask>> writes_;               // no "TxOnComm" yet, in the order of sending
    const std::shared_ptr<void> alive_ = std::make_shared<char>(); // gone when the port is gone
};
