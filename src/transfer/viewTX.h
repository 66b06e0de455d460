// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"
#include "platform/NotificationCenter.h"
#include "protocol/PlainSend.h"
#include "protocol/XModemProgram.h"
#include "protocol/XModemReceive.h"
#include "protocol/XModemSend.h"
#include "serial/serialPort.h"
#include "transfer/CurrentFile.h"
#include "transfer/EditorProgram.h"
#include "transfer/OpenWork.h"
#include "transfer/TransferConstants.h"
#include "transfer/TransferPanel.h"
#include "transfer/TransferRecord.h"
#include "transfer/TransferStatus.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

class MachineProgress;
class QBoxLayout;

/// The transfer view of one machine: sends the program in its editor to the control, or takes in what the control
/// sends. Hands bytes and time to the machines of protocol/ and carries out what they answer. Lives in a child view,
/// which owns the port. Main thread only.
class viewTX : public QWidget, public TransferConstants
{
    Q_OBJECT
public:
    explicit viewTX(QWidget* parent = nullptr);
    ~viewTX() override;

    /// Binds the view to the machine at that position of the machine list, for sending (true) or receiving. May be
    /// called again to rebind. An index outside the list ends the program.
    void initialize(bool send, int mcIndex);
    /// Follows a changed machine record: framing texts and the machine's line in words. Not while a transfer runs.
    void machineChanged();
    /// The heading stands second in `strip` from now on, and not at the top of the view.
    void moveHeading(QBoxLayout& strip);
    bool dncRunning() const; ///< a transfer is running: Stop is shown in the place of Send and Rewind
    void setDncRunning(bool running) { panel_.showRunning(running); }
    void takeFocus() { panel_.takeFocus(); }
    void setEOB(); ///< like the next two, a framing text from the machine record, in characters
    void setSOT();
    void setEOT();
    void btnSend_Click();
    void btnRestart_Click(); ///< shows what a start at the caret's line needs, to be sent from there
    void btnStop_Click();
    void btnRewind_Click();
    void btnSendNow();
    void btnHideWaitBox();
    /// Starts the transfer proper: header and first line, or the continuation. Nothing while one is under way.
    void beginSend();
    void TxOnComm();
    void startXModem();
    /// Acts on a reply of the control: true for ACK, false for NAK.
    void sendXModemPacket(bool next);
    void startXModemTimer(double interval);
    void tmrXModem_Tick();
    void RxOnComm();
    void btnNew_Click();
    void btnFolder_Click();
    void btnSave_Click();
    void btnLock_Click();
    /// Reads the program file into the editor, locked and rewound. A missing or unreadable file changes nothing.
    void openFile(const QString& path);
    /// Writes the whole text as UTF-8, atomically. A failure is told to the operator and leaves the text alone.
    bool saveFile(const QString& path);
    bool save();               ///< to its file, without one to one that is asked for; false if it was not saved
    OpenWork openWork() const; ///< what would be lost if this view ended now
    bool textLocked() const { return vTextLocked; }
    void setTextLocked(bool locked);
    void setComboHidden(bool hidden);
    void setPBarsHidden(bool hidden);
    /// Shows how far the transfer is: panel, percentage and the machine's icon.
    void movePBars();
    serialPort* sp = nullptr; ///< the host's; none before initialize
    std::shared_ptr<MachineRecord> mc;
    NotificationCenter* nc = &NotificationCenter::defaultCenter();
    QString EOB, SOT, EOT;
    QTimer tmrXModemTimer;
    TxState txState() const;
    bool booWaitingForStartSignal() const { return plain_.state() == PlainSend::State::Waiting; }
    qsizetype iIndexCurrentLine() const; ///< start of the line going out, in bytes of the editor's text
    qsizetype iNumLines() const;         ///< of the program; a line end that closes it begins no further one
    bool txEOF() const { return plain_.isLastLineOut(); } ///< the last line has been sent
    bool booSentXModemEOF() const { return xmodemSend_.isAllSent(); }
    int iXModemTimeoutCounter() const { return xmodemReceive_.silence(); } ///< ticks since the last received byte
    // Names that a transfer has had from the start; the program itself needs none of them.
    void btnFont_Click() {}
    void sendLine() { TxOnComm(); }
    void sendTrailer() { TxOnComm(); }
    double getNumLines() const;
    qsizetype iTextLength() const { return program_.size(); }
    bool doneOkumaNulls() const { return !plain_.isLeaderDue(); }
    int iXModemPacketNo() const { return xmodemSend_.nextNumber(); }
    bool booSentXModemBOF() const { return xmodemSend_.sent() > 0; }
    bool booSentXModemEOT() const { return xmodemSend_.state() == XModemSend::State::End; }
    bool booGotXModemSOH() const { return xmodemReceive_.state() != XModemReceive::State::Between; }
    QString strBuffer() const;
    QString sXModemPacket() const;
    const QByteArray& bBuffer() const { return xmodemSend_.program(); }
    const QByteArray& bPacket() const { return xmodemSend_.packet(); }
    const QByteArray& bytesXModemPacket() const { return xmodemReceive_.packet(); }

private:
    enum class Ending { Stopped, Finished, Cancelled, Unconfirmed, PortLost };
    void viewDidLoad();
    MachineProgress& progress() const;
    bool isXModem() const;
    bool startsFromTop() const;
    void enter(TransferState state);
    void readyAgain();
    void tellPortLost();
    bool openAgain();
    void startSend(const std::function<void(const PlainSend::Setup&)>& prepare);
    void waitOrBegin();
    void begin(const QString& how);
    void showLineOut();
    void showRewound();
    void end(Ending ending);
    void record(std::optional<Ending> ending = {});
    void stopMachines(Ending ending);
    void showRestart(PlainSend::Restart restart);
    void write(const QByteArray& bytes);
    void actOnReplies(const QByteArray& bytes);
    void carryOut(const XModemSend::Step& step);
    void showBlockOut();
    void carryOut(const XModemReceive::Step& step);
    void appendReceived(const QByteArray& bytes);
    qint64 now() const { return clock_.elapsed(); }
    TransferClock::Send plannedSend(qsizetype from) const;
    TransferFacts facts(TransferState state) const;
    void refreshStatus();
    void refreshStatusLater();
    std::unique_ptr<Ui::viewTX> ui;
    bool booModeTX = true, vTextLocked = false;
    TransferPanel panel_;
    EditorProgram program_;
    PlainSend plain_;
    bool sendsXModem_ = false; // the send under way or, without one, the last
    XModemProgram xmodemProgram_;
    XModemSend xmodemSend_;
    XModemReceive xmodemReceive_;
    CurrentFile file_{*this};
    TransferStatus status_;
    TransferRecord record_{*this};
    std::optional<TransferState> shownState_;
    QElapsedTimer clock_;
    QTimer tmrStatus_;
    qsizetype firstLine_ = 1;
    QString notice_; // how the send started, or why it did not end as it should
};
