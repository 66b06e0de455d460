// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/viewChild.h"
#include "ui_viewChild.h"

#include "config/g.h"
#include "config/LineSettings.h"
#include "config/NotificationNames.h"
#include "platform/NotificationCenter.h"
#include "shell/frmChild.h"
#include "shell/Leaving.h"
#include "shell/PortProblem.h"
#include "shell/viewSetup.h"
#include "transfer/viewTX.h"
#include "widgets/CompactRow.h"
#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <QDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QScreen>
#include <QTime>

#include <algorithm>

namespace
{
constexpr int warningSize = 48;
constexpr QPoint undockedOffset(40, 40);
constexpr int headingCharacters = 40; // beside the buttons of the strip
} // namespace

viewChild* childViewAt(qsizetype mcIndex)
{
    const bool isMachine = mcIndex >= 0 && mcIndex < g::mcChildViews.size();
    return isMachine ? dynamic_cast<viewChild*>(g::mcChildViews[mcIndex].get()) : nullptr;
}

viewChild::viewChild(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::viewChild>())
{
    ui->setupUi(this);
    TextLook::enlarge(*ui->lblTitle, 1.1);
    TextLook::enlarge(*ui->txtStartupError, 1.15);
    Images::showIn(*ui->imgStartupError, QStringLiteral("warning"), warningSize);
    ui->btnUnDock->setIcon(Images::icon(QStringLiteral("undock")));
    ui->btnClose->setIcon(Images::icon(QStringLiteral("close")));
    ui->btnSetupFailed->setIcon(Images::icon(QStringLiteral("setup")));
    // A transfer view handles a lost port itself. In setup it has to be closed, too, for its name to become free again.
    connect(sp.get(), &serialPort::lost, this, [this] {
        if (!vtx) sp->Close();
    });
    connect(ui->btnUnDock, &QToolButton::clicked, this, &viewChild::btnUnDock_Click);
    connect(ui->btnClose, &QToolButton::clicked, this, &viewChild::btnClose_Click);
    connect(ui->btnCancel, &QPushButton::clicked, this, &viewChild::btnCancel_Click);
    connect(ui->btnTryAgain, &QPushButton::clicked, this, &viewChild::btnTryAgain_Click);
    connect(ui->btnSetupFailed, &QPushButton::clicked, this, [this] { startSetup(iMcIndex); });
    CompactRow::ofTools(*ui->boxControls, headingCharacters);
    showStartupError(false);
}

viewChild::~viewChild()
{
    delete frm;
    delete ui->rootView; // the working views use the port
}

void viewChild::configurePort()
{
    const auto& mc = *g::mcIcons[iMcIndex];
    sp->Speed = static_cast<unsigned long>(mc.MCBAUD);
    sp->StopBits = static_cast<int>(mc.MCSBITS);
    sp->FlowType = static_cast<int>(mc.MCFLOW);
    const auto format = dataFormat(mc.MCDBPAR);
    sp->DataBits = format == DataFormat::EightBits ? 8 : 7;
    sp->Parity = format == DataFormat::SevenBitsEven ? 1 : 0;
}

void viewChild::startMode(int mode, int mcIndex, const QString& program)
{
    isLoaded_ = true;
    mode_ = mode;
    program_ = program;
    machineChanged(mcIndex);
    configurePort();
    auto& mc = *g::mcIcons[mcIndex];
    // A bare name may have gone to another adapter by now, and a lasting one is gone with its adapter.
    if (!QFileInfo(mc.portNow).isSymLink()) mc.portNow.clear();
    const bool isOpen = sp->Open(mc.port()) >= 0;
    showStartupError(!isOpen);
    if (!isOpen) return;
    if (mode == SetupMode) loadSetup();
    if (mode == SendMode || mode == ReceiveMode) loadTransfer(mode == SendMode);
}

void viewChild::startSetup(int mcIndex)
{
    isLoaded_ = true;
    mode_ = SetupMode;
    machineChanged(mcIndex);
    showStartupError(false);
    loadSetup();
}

void viewChild::showStartupError(bool shown)
{
    if (shown) {
        const QString port = g::mcIcons[iMcIndex]->MCPORT;
        ui->txtStartupError->setText(
            QStringLiteral("The DNC process is configured to use port %1 but the port could not be opened").arg(port));
        ui->lblLikelyCause->setText(PortProblem::likelyCause({port, sp->Speed, {sp->openError, sp->openErrorText}}));
    }
    ui->boxStartupError->setHidden(!shown);
    ui->rootView->setHidden(shown);
    ui->boxControls->setHidden(shown || frm);
    ui->lineControls->setHidden(shown || frm);
    if (shown) ui->btnSetupFailed->setFocus();
}

void viewChild::loadSetup()
{
    vSet = new viewSetup(ui->rootView);
    ui->rootLayout->addWidget(vSet);
    vSet->initialize(iMcIndex);
    vSet->show();
    vSet->setFocus(Qt::TabFocusReason); // selects the name, for a new machine
}

void viewChild::loadTransfer(bool send)
{
    vtx = new viewTX(ui->rootView);
    ui->rootLayout->addWidget(vtx);
    vtx->initialize(send, iMcIndex);
    placeHeading();
    vtx->show();
    if (!send) return vtx->takeFocus();
    if (program_.isEmpty()) return vtx->btnFolder_Click(); // choosing Send goes straight to picking the file
    vtx->openFile(program_);
}

// In one line with the buttons of the strip, it leaves the program more room.
void viewChild::placeHeading()
{
    if (vtx) vtx->moveHeading(frm ? frm->strip() : *ui->controlsLayout);
}

void viewChild::machineChanged(int mcIndex)
{
    iMcIndex = mcIndex;
    showTitle();
    if (frm) frm->initialize(mcIndex);
    if (vtx && !vtx->dncRunning()) vtx->machineChanged();
}

void viewChild::machineMoved(int mcIndex)
{
    iMcIndex = mcIndex;
    if (frm) frm->iIndex = mcIndex;
}

void viewChild::showTitle()
{
    const QString name = g::mcIcons[iMcIndex]->MCNAME;
    const bool isSetup = mode_ == SetupMode; // a transfer's heading, beside it, says the rest
    ui->lblTitle->setText(isSetup ? QStringLiteral("%1 \u2013 Setup").arg(name) : name);
    if (frm) frm->showTitle(isSetup ? QStringLiteral("Setup") : QString());
}

void viewChild::keyPressEvent(QKeyEvent* event)
{
    const bool failed = !ui->boxStartupError->isHidden();
    if (failed && event->key() == Qt::Key_Escape) {
        btnCancel_Click();
    } else if (failed && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        // Outside a dialog Enter presses no button by itself.
        auto* focused = qobject_cast<QPushButton*>(focusWidget());
        (focused ? focused : ui->btnSetupFailed)->click();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void viewChild::takeFocus()
{
    if (vtx) vtx->takeFocus();
    if (vSet) vSet->setFocus();
}

void viewChild::btnUnDock_Click()
{
    frm = new frmChild(iMcIndex);
    showTitle();
    ui->boxControls->hide(); // the window has its own frame and title
    ui->lineControls->hide();
    placeHeading();
    frm->resize(size().expandedTo(frm->minimumSizeHint()));
    // A little to the side, so that it visibly comes loose.
    const QRect area = screen()->availableGeometry();
    const QPoint place = mapToGlobal(undockedOffset);
    frm->move(std::max(area.left(), std::min(place.x(), area.right() - frm->width())),
              std::max(area.top(), std::min(place.y(), area.bottom() - frm->height() - undockedOffset.y())));
    frm->takeIn(this);
    frm->show();
    takeFocus();
    g::mcIcons[iMcIndex]->MCISDOCKED = false;
    NotificationCenter::defaultCenter().post(Notifications::dockedChildLeaving_Event, this,
                                             {{Notifications::machineIndex, iMcIndex}});
}

bool viewChild::isUndocked() const
{
    return frm;
}

void viewChild::bringUp()
{
    if (frm) frm->bringUp();
}

void viewChild::docked()
{
    if (!frm) return;
    // A file dialog belongs to the window that goes away.
    for (auto* dialog : findChildren<QDialog*>())
        dialog->reject();
    auto* window = frm.data();
    frm = nullptr;
    placeHeading();
    window->hide();
    window->deleteLater();
    g::mcIcons[iMcIndex]->MCISDOCKED = true;
    ui->boxControls->show();
    ui->lineControls->show();
}

void viewChild::btnClose_Click()
{
    if (mayEnd()) end();
}

void viewChild::btnCancel_Click()
{
    btnClose_Click();
}

void viewChild::btnTryAgain_Click()
{
    startMode(mode_, iMcIndex, program_);
    if (ui->boxStartupError->isHidden()) return;
    // The page looks as before; it has to show that something was done.
    const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    ui->lblLikelyCause->setText(ui->lblLikelyCause->text() + QStringLiteral("\n\nTried again at %1.").arg(time));
    ui->btnTryAgain->setFocus();
}

OpenWork viewChild::openWork() const
{
    OpenWork work;
    if (vtx) work = vtx->openWork();
    if (vSet && vSet->isChanged()) work.unsaved = OpenWork::Unsaved::Setup;
    return work;
}

bool viewChild::save()
{
    if (vSet) vSet->btnSave_Click();
    return !vtx || vtx->save();
}

bool viewChild::mayEnd()
{
    return Leaving::isAllowed({this});
}

void viewChild::end()
{
    if (!isLoaded_) return;
    isLoaded_ = false;
    if (vtx && vtx->dncRunning()) vtx->btnStop_Click();
    sp->Close();
    hide();
    setParent(nullptr); // out of the main window, or of its own window
    if (frm) frm->deleteLater();
    frm = nullptr;
    // Later: this may be running inside a handler of the working view.
    if (vtx) vtx->deleteLater();
    if (vSet) vSet->deleteLater();
    vtx = nullptr;
    vSet = nullptr;
    g::mcIcons[iMcIndex]->MCISDOCKED = false;
    NotificationCenter::defaultCenter().post(Notifications::dockedChildLeaving_Event, this,
                                             {{Notifications::machineIndex, iMcIndex}});
}
