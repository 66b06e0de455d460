// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/ControlCodes.h"
#include "config/g.h"
#include "editor/EditorActions.h"
#include "transfer/MachineProgress.h"
#include "transfer/TransferHost.h"
#include "transfer/TransferWords.h"

namespace
{
const QString txOnComm = QStringLiteral("TxOnComm");
const QString rxOnComm = QStringLiteral("RxOnComm");

// Stands in for the icon of a record that no icon carries.
class NoIcon : public MachineProgress
{
public:
    double pBarMaximum() const override { return maximum_; }
    void setPBarMaximum(double maximum) override { maximum_ = maximum; }
    void setPBarValue(double) override {}
    void setPBarHidden(bool) override {}
    void showActivity(TransferActivity) override {}

private:
    double maximum_ = 0;
};

QString lineFormat(const MachineRecord& mc)
{
    switch (mc.MCDBPAR) {
    case 1:
        return QStringLiteral("n,7,");
    case 2:
        return QStringLiteral("e,7,");
    default:
        return QStringLiteral("n,8,");
    }
}
} // namespace

viewTX::viewTX(QWidget* parent)
    : QWidget(parent), sp(std::make_shared<serialPort>()), mc(std::make_shared<MachineRecord>()),
      ui(std::make_unique<Ui::viewTX>()), program_((ui->setupUi(this), *ui->rt1))
{
    connect(ui->btnSend, &QPushButton::clicked, this, &viewTX::btnSend_Click);
    connect(ui->btnStop, &QPushButton::clicked, this, &viewTX::btnStop_Click);
    connect(ui->btnRewind, &QPushButton::clicked, this, &viewTX::btnRewind_Click);
    connect(ui->btnSendNow, &QPushButton::clicked, this, &viewTX::btnSendNow);
    connect(ui->btnHideWaitBox, &QPushButton::clicked, this, &viewTX::btnHideWaitBox);
    connect(ui->btnNew, &QToolButton::clicked, this, &viewTX::btnNew_Click);
    connect(ui->btnFolder, &QToolButton::clicked, this, &viewTX::btnFolder_Click);
    connect(ui->btnSave, &QToolButton::clicked, this, &viewTX::btnSave_Click);
    connect(ui->btnLock, &QToolButton::clicked, this, &viewTX::btnLock_Click);
    connect(ui->btnFont, &QToolButton::clicked, this, &viewTX::btnFont_Click);
    connect(&tmrXModemTimer, &QTimer::timeout, this, &viewTX::tmrXModem_Tick);
    // A line that was stopped half-way is continued only where the operator left it.
    connect(ui->rt1, &ProgramEditor::operatorTouched, this, [this] {
        if (dncRunning()) return;
        resume_.reset();
        readyAgain();
    });
    connect(ui->rt1, &ProgramEditor::lineOutShown, this, &viewTX::movePBars);
    connect(ui->rt1, &QsciScintilla::textChanged, this, [this] {
        resume_.reset();
        refreshStatusLater();
    });
    connect(ui->cbo1, &QComboBox::activated, this, &viewTX::readyAgain);
    connect(&tmrStatus_, &QTimer::timeout, this, &viewTX::refreshStatus);
    clock_.start();
    ui->boxPBOuter->installEventFilter(this);
    new EditorActions(this, ui->rt1, ui->findBar);
    viewDidLoad();
}

viewTX::~viewTX()
{
    nc->removeObserver(this);
    icon().showActivity(TransferActivity::Idle);
    icon().setPBarHidden(true);
}

void viewTX::initialize(bool send, int mcIndex)
{
    if (mcIndex < 0 || mcIndex >= g::mcIcons.size()) qFatal("no machine at index %d", mcIndex);
    booModeTX = send;
    mode = send ? MODE_TX : MODE_RX;
    mc = g::mcIcons[mcIndex];
    if (auto* host = dynamic_cast<TransferHost*>(g::mcChildViews[mcIndex].get())) sp = host->machinePort();

    showMachine();
    ui->txtTXorRX->setText(send ? QStringLiteral("Send to CNC") : QStringLiteral("Receive"));
    ui->boxTxButtons->setHidden(!send); // a receive view cannot send
    setAcceptDrops(send);
    observePort();
    setEOB();
    setSOT();
    setEOT();
    status_.enter(send ? TransferState::Ready : TransferState::Listening);
    showPictures();

    tmrXModemTimer.stop();
    if (!isXModem()) return;
    if (send) {
        // An XModem send starts from the top, when the control asks for it.
        ui->btnSendNow->hide();
        setComboHidden(true);
    } else {
        startXModemTimer(xmodemTickInterval);
    }
}

void viewTX::machineChanged()
{
    showMachine();
    setEOB();
    setSOT();
    setEOT();
    refreshStatus();
}

void viewTX::observePort()
{
    nc->removeObserver(this);
    disconnect(lostConnection_);
    lostConnection_ = connect(sp.get(), &serialPort::lost, this, &viewTX::portVanished);
    // A sending view listens too: the control's start signal and XModem replies drive it.
    nc->addObserver(this, rxOnComm, sp.get(), [this](const Notification&) { RxOnComm(); });
    if (booModeTX) nc->addObserver(this, txOnComm, sp.get(), [this](const Notification&) { TxOnComm(); });
}

QString viewTX::machineSummary() const
{
    if (mc->MCPORT.isEmpty()) return QStringLiteral("NONE");
    QString port = mc->MCPORT;
    if (port.startsWith(QLatin1String("/dev/"))) port.remove(0, 5);
    const QString line =
        port + u',' + QString::number(mc->MCBAUD) + u',' + lineFormat(*mc) + QString::number(mc->MCSBITS);
    return line + QStringLiteral("\r\n") + TransferWords::flow(mc->MCFLOW);
}

MachineProgress& viewTX::icon() const
{
    static NoIcon noIcon;
    auto* progress = dynamic_cast<MachineProgress*>(mc.get());
    return progress ? *progress : noIcon;
}

bool viewTX::isXModem() const
{
    return mc->MCFLOW == 3;
}

bool viewTX::dncRunning() const
{
    return ui->btnSend->isHidden();
}

void viewTX::setDncRunning(bool running)
{
    const bool byKeyboard = running && ui->btnSend->hasFocus();
    ui->btnSend->setHidden(running);
    ui->btnRewind->setHidden(running);
    ui->btnStop->setHidden(!running);
    if (byKeyboard) ui->btnStop->setFocus();
    applyLock();
}

void viewTX::setEOB()
{
    EOB = ControlCodes::endOfBlock(mc->MCTXEOB);
}

void viewTX::setSOT()
{
    SOT = ControlCodes::startOrEnd(mc->MCTXSOT);
}

void viewTX::setEOT()
{
    EOT = ControlCodes::startOrEnd(mc->MCTXEOT);
}
