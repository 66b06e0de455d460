// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/ControlCodes.h"
#include "config/g.h"
#include "config/LineSettings.h"
#include "config/LineWords.h"
#include "config/NotificationNames.h"
#include "editor/EditorActions.h"
#include "protocol/XModemBlock.h"
#include "transfer/CompareMenu.h"
#include "transfer/MachineProgress.h"
#include "transfer/MachineRules.h"
#include "transfer/ProgramDrop.h"
#include "transfer/ProgramFile.h"
#include "transfer/RecentMenu.h"
#include "transfer/Replacing.h"
#include "transfer/RestartPage.h"
#include "transfer/SavedPrograms.h"
#include "transfer/TransferHost.h"

namespace
{
// Stands in for the icon if the record has none.
class NoProgress : public MachineProgress
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
} // namespace

viewTX::viewTX(QWidget* parent)
    : QWidget(parent), mc(std::make_shared<MachineRecord>()), ui(std::make_unique<Ui::viewTX>()),
      panel_(*this, (ui->setupUi(this), *ui)), program_(*ui->rt1), plain_(program_)
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
    // A send that was stopped is continued only where the operator left it. Lines that need the rest of their start
    // blocks do not go out without them.
    const auto forgetPlace = [this] {
        if (plain_.isStoppedInStart() && !status_.isRunning()) ui->cbo1->setCurrentIndex(0);
        plain_.forgetPlace();
    };
    connect(ui->rt1, &ProgramEditor::operatorTouched, this, [this, forgetPlace] {
        if (!booModeTX || status_.isRunning()) return;
        forgetPlace();
        readyAgain();
    });
    connect(ui->rt1, &ProgramEditor::lineOutShown, this, &viewTX::movePBars);
    connect(ui->rt1, &QsciScintilla::textChanged, this, [this, forgetPlace] {
        forgetPlace();
        refreshStatusLater();
    });
    connect(ui->cbo1, &QComboBox::activated, this, &viewTX::readyAgain);
    connect(&tmrStatus_, &QTimer::timeout, this, &viewTX::refreshStatus);
    const auto open = [this](const QString& path) {
        if (ProgramFile::isReadable(path)) return Replacing::openFile(*this, path);
        g::msgBox(ProgramFile::unreadable(path), QStringLiteral("OK"), {});
    };
    // The drag has to end first.
    connect(new ProgramDrop(this, ui->btnFolder), &ProgramDrop::dropped, this, open, Qt::QueuedConnection);
    auto* recent = new RecentMenu(this, [this] { return mc->recentPrograms; });
    connect(recent, &RecentMenu::chosen, this, open);
    ui->btnFolder->setMenu(recent);
    ui->btnFolder->setPopupMode(QToolButton::MenuButtonPopup);
    tmrStatus_.setSingleShot(true);
    clock_.start();
    auto* compare = new CompareMenu(this, *ui->rt1, file_, [this]() -> const MachineRecord& { return *mc; });
    ui->btnCompare->setMenu(compare);
    (new EditorActions(this, ui->rt1, ui->findBar))->addToMenu(compare->actions() << ui->actRestart);
    addAction(ui->actRestart);
    ui->btnRestart->setDefaultAction(ui->actRestart);
    connect(ui->actRestart, &QAction::triggered, this, &viewTX::btnRestart_Click);
    ui->checkLine->watch(*ui->rt1);
    ui->savedPrograms->watch(*ui->rt1);
    connect(ui->savedPrograms, &SavedPrograms::silent, this, [this] { record(Ending::Finished); });
    connect(ui->savedPrograms, &SavedPrograms::recorded, this, [this](const auto& entry) { record_.report(entry); });
    connect(ui->savedPrograms, &SavedPrograms::openWanted, this, open);
    viewDidLoad();
}

viewTX::~viewTX()
{
    nc->removeObserver(this);
    ui->savedPrograms->end();
    record();
    progress().showActivity(TransferActivity::Idle);
    progress().setPBarHidden(true);
}

void viewTX::viewDidLoad()
{
    panel_.setUp();
    connect(ui->portReturn, &PortReturn::chosen, this, [this](PortReturn::Offer::Kind offer) {
        offer == PortReturn::Offer::Kind::Continue ? btnSend_Click() : void(openAgain());
    });
    ui->cbo1->setCurrentIndex(0);
    setPBarsHidden(true);
    setTextLocked(false);
    enter(TransferState::Ready);
}

void viewTX::initialize(bool send, int mcIndex)
{
    if (mcIndex < 0 || mcIndex >= g::mcIcons.size()) qFatal("no machine at index %d", mcIndex);
    if (status_.isRunning()) end(Ending::Stopped);
    record();
    booModeTX = send;
    mode = send ? MODE_TX : MODE_RX;
    mc = g::mcIcons[mcIndex];
    auto* const host = dynamic_cast<TransferHost*>(g::mcChildViews[mcIndex].get());
    if (!host) qFatal("no port for the machine at index %d", mcIndex);
    if (sp) disconnect(sp, nullptr, this, nullptr);
    sp = &host->machinePort();

    panel_.showMode(send);
    setAcceptDrops(send);
    nc->removeObserver(this);
    // Shown in the view and on the icon. A message box would hold up the operators of other machines.
    connect(sp, &serialPort::lost, this, [this] { end(Ending::PortLost); });
    // A sending view listens, too: the control's start signal and XModem replies drive it.
    nc->addObserver(this, Notifications::RxOnComm, sp, [this](const Notification&) { RxOnComm(); });
    if (send) nc->addObserver(this, Notifications::TxOnComm, sp, [this](const Notification&) { TxOnComm(); });

    ui->portReturn->opened(mc->port());
    ui->lineLamps->watch(*sp);
    shownState_.reset(); // it may be the icon of another machine
    machineChanged();
    enter(send ? TransferState::Ready : TransferState::Listening);
}

void viewTX::machineChanged()
{
    RestartPage::closeAll(*this); // it reads the program as the old settings say
    panel_.showLine(LineWords::shortLine(*mc), LineWords::line(*mc));
    setEOB();
    setSOT();
    setEOT();
    ui->checkLine->setRules(MachineRules::check(*mc));
    record_.listenTo(*mc);
    ui->savedPrograms->follow(mc);
    enter(status_.entered()); // what the view shows depends on the flow control, too
}

void viewTX::moveHeading(QBoxLayout& strip)
{
    strip.insertWidget(1, ui->boxHeading);
    const int gap = ui->mainLayout->spacing();
    const bool isFirst = strip.itemAt(0)->isEmpty(); // nothing stands before it
    ui->headLayout->setContentsMargins(isFirst ? 0 : 2 * gap, 0, gap, 0);
}

MachineProgress& viewTX::progress() const
{
    static NoProgress nobodysProgress;
    auto* shown = dynamic_cast<MachineProgress*>(mc.get());
    return shown ? *shown : nobodysProgress;
}

bool viewTX::isXModem() const
{
    return flowControl(mc->MCFLOW) == FlowControl::XModem;
}

// Nothing else changes the state; the buttons, the lock, the boxes and the timers follow from it.
void viewTX::enter(TransferState state)
{
    status_.enter(state, now());
    if (booModeTX && state == TransferState::Sending && !record_.isUnderWay()) {
        sp->restartHoldTimes();
        mc->lastSentProgram = file_.path();
        const auto start = facts(TransferState::WaitingForStart);
        record_.beginSend(*mc, isXModem() ? 1 : start.line, start.restartLine > 0 && start.line == start.restartLine);
    }
    if (status_.isRunning()) RestartPage::closeAll(*this);
    panel_.offerRestart(booModeTX && !isXModem() && !status_.isRunning());
    panel_.showLock(vTextLocked, status_.isRunning());
    // An XModem send always starts at the top, when the control asks for it.
    setComboHidden(isXModem() || state == TransferState::Sending);
    setDncRunning(status_.isRunning());
    panel_.showWaitBox(state, !isXModem());
    ui->portReturn->setLost(state == TransferState::PortLost);
    ui->checkLine->setPaused(!booModeTX || status_.isRunning());

    const bool isTimed = booModeTX ? state == TransferState::Sending : state != TransferState::PortLost;
    if (!isXModem() || !isTimed)
        tmrXModemTimer.stop();
    else if ((booModeTX || state == TransferState::Listening) && !tmrXModemTimer.isActive())
        startXModemTimer(xmodemTickInterval);
    refreshStatus();
}

bool viewTX::dncRunning() const
{
    return ui->btnSend->isHidden();
}

viewTX::TxState viewTX::txState() const
{
    if (xmodemSend_.state() != XModemSend::State::Idle) return {TxState::txState_sending_xmodem};
    switch (plain_.state()) {
    case PlainSend::State::Header:
        return {TxState::txState_sending_header};
    case PlainSend::State::StartBlocks:
    case PlainSend::State::Lines:
        return {TxState::txState_sending_body};
    case PlainSend::State::Trailer:
        return {TxState::txState_sending_trailer};
    default:
        return {TxState::txState_idle};
    }
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

qsizetype viewTX::iIndexCurrentLine() const
{
    return sendsXModem_ ? xmodemProgram_.line().start : plain_.lineOut().start;
}

QString viewTX::strBuffer() const
{
    return g::getString(xmodemSend_.program());
}

QString viewTX::sXModemPacket() const
{
    return g::getString(xmodemSend_.packet().mid(XModemBlock::headSize, XModemBlock::dataSize));
}
