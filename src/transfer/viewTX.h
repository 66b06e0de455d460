// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"
#include "platform/NotificationCenter.h"
#include "protocol/XModemCodes.h"
#include "protocol/XModemProgram.h"
#include "protocol/XModemReceive.h"
#include "protocol/XModemSend.h"
#include "serial/serialPort.h"
#include "transfer/EditorProgram.h"
#include "transfer/TransferStatus.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>

class MachineProgress;
class ProgramEditor;
namespace Ui
{
class viewTX;
}

/// The transfer view of one machine: sends the program in its editor to the control, or takes in what the control
/// sends. Lives in a child view, which owns the port. Main thread only.
///
/// The class is spread over viewTX.cpp (controller), _sending, _xmodem, _receiving, _editor and
/// _status.
class viewTX : public QWidget
{
    Q_OBJECT
public:
    explicit viewTX(QWidget* parent = nullptr);
    ~viewTX() override;

    static constexpr int MODE_TX = 1;
    static constexpr int MODE_RX = 2;

    static constexpr int iSOH = XModemCodes::SOH;
    static constexpr int iEOT = XModemCodes::EOT;
    static constexpr int iACK = XModemCodes::ACK;
    static constexpr int iNAK = XModemCodes::NAK;

    struct TxState {
        int State = 0;
        static constexpr int txState_idle = 0;
        static constexpr int txState_sending_header = 1;
        static constexpr int txState_sending_body = 2;
        static constexpr int txState_sending_trailer = 3;
        static constexpr int txState_stopping = 4; // no transition enters it
        static constexpr int txState_stopped = 5;  // no transition enters it
        static constexpr int txState_sending_xmodem = 6;
    };
    TxState txState;

    // --- Controller ------------------------------------------------------------------------------------------------
    /// Binds the view to the machine at that position of the machine list, for sending (true) or receiving. May be
    /// called again to rebind. An index outside the list ends the program.
    void initialize(bool send, int mcIndex);
    /// Follows a changed machine record: framing strings and the machine summary. Not while a transfer runs.
    void machineChanged();
    bool isSendMode() const { return booModeTX; }
    /// A transfer is running: Stop is shown in the place of Send and Rewind.
    bool dncRunning() const;
    void setDncRunning(bool running);

    /// Framing texts from the machine record, in characters.
    void setEOB();
    void setSOT();
    void setEOT();
    QString EOB;
    QString SOT;
    QString EOT;

    std::shared_ptr<serialPort> sp;
    std::shared_ptr<MachineRecord> mc;

    // --- Sending ---------------------------------------------------------------------------------------------------
    void btnSend_Click();
    void btnStop_Click();
    void btnRewind_Click();
    void btnSendNow();
    void btnHideWaitBox();
    /// Starts the transfer proper: header and first line, or the continuation. Nothing while one is under way.
    void beginSend();
    void sendLine();
    void sendTrailer();
    void TxOnComm();

    // --- XModem ----------------------------------------------------------------------------------------------------
    void startXModem();
    /// Acts on a reply of the control: true for ACK (and after a cancel), false for NAK.
    void sendXModemPacket(bool next);
    void startXModemTimer(double interval);
    void tmrXModem_Tick();

    // --- Receiving -------------------------------------------------------------------------------------------------
    void RxOnComm();
    void btnSave_Click();
    /// Writes the whole text as UTF-8, atomically. A failure is told to the operator and leaves the text alone.
    void saveFile(const QString& path);

    // --- Editor panel ----------------------------------------------------------------------------------------------
    void btnNew_Click();
    void btnFolder_Click();
    void btnLock_Click();
    void btnFont_Click();
    /// Reads the program file into the editor, locked and rewound. A missing or unreadable file changes nothing.
    void openFile(const QString& path);
    bool textLocked() const { return vTextLocked; }
    void setTextLocked(bool locked);
    void setComboHidden(bool hidden);
    void setPBarsHidden(bool hidden);
    /// Lines of the editor text, at least 1. The editor knows the count: nothing walks the text.
    double getNumLines() const;
    /// Shows how far the transfer is: panel, percentage and the machine's icon.
    void movePBars();

    // --- State, as the parts of the transfer share it ----------------------------------------------------------------
    static constexpr double xmodemTickInterval = 1.0; // s
    int mode = 0;
    NotificationCenter* nc = &NotificationCenter::defaultCenter();
    bool doneOkumaNulls = false; ///< the leader before the first line has gone out
    bool txSOF = false;
    bool txEOF = false; ///< the last line has been sent
    // Lengths and positions are bytes of the editor's text.
    qsizetype iTextLength = 0;
    qsizetype iIndexCurrentLine = 0;
    bool booWaitingForStartSignal = false;

    int iXModemPacketNo() const { return xmodemSend_.nextNumber(); }
    bool booSentXModemBOF() const { return xmodemSend_.sent() > 0; }
    bool booSentXModemEOF() const { return xmodemSend_.isAllSent(); }
    bool booSentXModemEOT() const { return xmodemSend_.state() == XModemSend::State::End; }
    const QByteArray& bBuffer() const { return xmodemSend_.program(); } ///< the whole program as bytes
    const QByteArray& bPacket() const { return xmodemSend_.packet(); }  ///< the block last sent
    bool booGotXModemSOH() const { return xmodemReceive_.state() != XModemReceive::State::Between; }
    const QByteArray& bytesXModemPacket() const { return xmodemReceive_.packet(); } ///< the block being received
    int iXModemTimeoutCounter() const { return xmodemReceive_.silence(); } ///< ticks since the last received byte
    QTimer tmrXModemTimer;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    // One program file dropped on a send view is opened, whenever Open could.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // Items of cbo1.
    static constexpr int fromTheTop = 0;
    static constexpr int fromTheCaret = 1;

    // Where a stopped transfer goes on, as long as the operator leaves caret and text alone.
    struct ResumePoint {
        int state = TxState::txState_idle;
        bool txEOF = false;
        qsizetype nextLine = 0;
    };

    void viewDidLoad();
    void observePort();
    void showMachine();
    QString machineSummary() const;
    MachineProgress& icon() const;
    int selectedStart() const;

    bool underWay() const;
    bool isXModem() const;
    void sendHeader();
    void continueSend();
    void endedByItself();
    void applyLock();
    QString droppedFile(const QDropEvent& event) const;
    QString programFolder() const;
    void showPercent(double percent);
    void showWaitBox(const QString& text, bool canSendNow);
    static QString waitForStart();

    void carryOut(const XModemSend::Step& step);
    void showBlockOut();
    void endXModem(XModemSend::Ending ending);
    void actOnXModemReplies(const QByteArray& bytes);
    void carryOut(const XModemReceive::Step& step);
    void reply(XModemReceive::Reply reply);
    void noteCancelled();

    void appendReceived(const QByteArray& bytes);

    qint64 now() const;
    qsizetype programLines() const;
    TransferClock::Send plainSend(qsizetype from) const;
    void beginClock();
    void beginXModemClock();
    void send(const QByteArray& bytes);
    void readyAgain();
    QString noticeFor(TransferState state) const;
    TransferFacts facts(TransferState state) const;
    void refreshStatus();
    void refreshStatusLater();
    void showProgramName();
    void setUpFonts();
    void showPictures();
    void portVanished();
    void goBackToLineOut();
    void portLost();
    bool portIsBack();

    std::unique_ptr<Ui::viewTX> ui;
    EditorProgram program_;
    bool booModeTX = true;
    bool vTextLocked = false;
    qsizetype nextLine_ = 0; // position of the line that goes out next; belongs to the transfer while it runs
    std::optional<ResumePoint> resume_;
    double percent_ = 0;
    QString lastFolder_; // of the file opened or saved last in this view

    XModemProgram xmodemProgram_;
    XModemSend xmodemSend_;
    XModemReceive xmodemReceive_;

    // What the operator is told.
    TransferStatus status_;
    std::optional<TransferState> shownState_;
    QElapsedTimer clock_;
    QTimer tmrStatus_;
    qsizetype firstLine_ = 1;
    QString lostNotice_;
    QString cancelNotice_;
    QMetaObject::Connection lostConnection_;
};
