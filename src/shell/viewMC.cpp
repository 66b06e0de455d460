// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/viewMC.h"
#include "ui_viewMC.h"

#include "config/LineWords.h"
#include "config/NotificationNames.h"
#include "platform/NotificationCenter.h"
#include "shell/MachineButton.h"
#include "transfer/ProgramDrop.h"
#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <QEnterEvent>

#include <algorithm>
#include <utility>

namespace
{
constexpr int barSteps = 1000; // the bar itself counts in int, a program may be longer
constexpr int machineSize = 40, stateSize = 14;

struct Look {
    TransferActivity activity;
    const char* text; // %1: how far the transfer has come
    const char* machine;
    const char* state;
};
constexpr Look looks[] = {
    {TransferActivity::Idle, "Idle", "machine", "state-idle"},
    {TransferActivity::Waiting, "Waiting", "machine-waiting", "state-waiting"},
    {TransferActivity::Sending, "Sending %1 %", "machine-transferring", "state-sending"},
    {TransferActivity::Held, "Held at %1 %", "machine-held", "state-held"},
    {TransferActivity::Still, "Not moving at %1 %", "machine-waiting", "state-waiting"},
    {TransferActivity::Stopped, "Stopped at %1 %", "machine", "stop"},
    {TransferActivity::Sent, "Sent", "machine", "state-done"},
    {TransferActivity::Unconfirmed, "Sent, not confirmed", "machine", "warning"},
    {TransferActivity::Listening, "Waiting for bytes", "machine", "state-waiting"},
    {TransferActivity::Receiving, "Receiving", "machine-transferring", "state-receiving"},
    {TransferActivity::Received, "Received", "machine", "state-done"},
    {TransferActivity::PortLost, "Port lost", "machine-lost", "state-lost"},
};
} // namespace

viewMC::viewMC(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::viewMC>())
{
    ui->setupUi(this);
    ui->boxFace->setAttribute(Qt::WA_TransparentForMouseEvents); // clicks go to the button under it
    auto sizePolicy = ui->pBar->sizePolicy();
    sizePolicy.setRetainSizeWhenHidden(true); // icons keep their height when a transfer begins
    ui->pBar->setSizePolicy(sizePolicy);
    ui->pBar->setRange(0, barSteps);
    TextLook::dim(*ui->lblPort);
    ui->btnDeleteIcon->installEventFilter(this);
    ui->btnMC->installEventFilter(this);
    connect(ui->btnMC, &MachineButton::clicked, this, &viewMC::btnMC_Click);
    connect(ui->btnMC, &MachineButton::deleteWanted, this, &viewMC::btnDeleteIcon_click);
    connect(ui->btnDeleteIcon, &QToolButton::clicked, this, &viewMC::btnDeleteIcon_click);
    auto* drop = new ProgramDrop(this, ui->btnMC);
    setAcceptDrops(true);
    connect(drop, &ProgramDrop::hovering, ui->btnMC, &MachineButton::setDropTarget);
    connect(drop, &ProgramDrop::dropped, this, &viewMC::programDropped);
    ui->pBar->hide();
    isActive(false);
}

viewMC::~viewMC() = default;

void viewMC::isActive(bool active)
{
    _isActive = active;
    ui->btnMC->setActive(active);
    showDeleteButton();
    showState();
}

void viewMC::refresh()
{
    QString port = LineWords::portName(MachineRecord::port());
    if (port.isEmpty()) port = QStringLiteral("no port");
    ui->lblName->setText(MCNAME);
    ui->lblPort->setText(port);
    ui->btnMC->setToolTip(QStringLiteral("%1 on %2\nEnter opens its menu, Del deletes it").arg(MCNAME, port));
    ui->btnMC->setAccessibleName(QStringLiteral("%1 on %2").arg(MCNAME, port));
    ui->btnDeleteIcon->setAccessibleName(QStringLiteral("Delete %1").arg(MCNAME));
}

MachineButton* viewMC::button() const
{
    return ui->btnMC;
}

void viewMC::setTabStop(bool stops)
{
    const auto policy = stops ? Qt::StrongFocus : Qt::ClickFocus;
    ui->btnMC->setFocusPolicy(policy);
    ui->btnDeleteIcon->setFocusPolicy(policy);
}

bool viewMC::isTabStop() const
{
    return ui->btnMC->focusPolicy() == Qt::StrongFocus;
}

void viewMC::btnMC_Click()
{
    NotificationCenter::defaultCenter().post(Notifications::MCIcon_Click, this,
                                             {{Notifications::machineIndex, MCINDEX}});
}

void viewMC::btnDeleteIcon_click()
{
    NotificationCenter::defaultCenter().post(Notifications::btnDeleteIcon_Click, this,
                                             {{Notifications::machineIndex, MCINDEX}});
}

double viewMC::pBarMaximum() const
{
    return maximum_;
}

void viewMC::setPBarMaximum(double maximum)
{
    maximum_ = maximum;
}

void viewMC::setPBarValue(double value)
{
    value_ = value;
    showState();
}

void viewMC::setPBarHidden(bool hidden)
{
    ui->pBar->setHidden(hidden);
}

void viewMC::showActivity(TransferActivity activity)
{
    const bool isNew = std::exchange(activity_, activity) != activity;
    showState();
    if (isNew)
        NotificationCenter::defaultCenter().post(Notifications::activityChanged_Event, this,
                                                 {{Notifications::machineIndex, MCINDEX}});
}

QString viewMC::stateText() const
{
    return ui->lblState->text();
}

void viewMC::showBar()
{
    double share = maximum_ > 0 ? std::clamp(value_ / maximum_, 0.0, 1.0) : 0;
    const bool isAllSent = activity_ == TransferActivity::Sent || activity_ == TransferActivity::Unconfirmed;
    if (isAllSent) share = 1; // the value is where the last line began
    const int steps = static_cast<int>(share * barSteps);
    if (ui->pBar->value() == steps) return;
    ui->pBar->setValue(steps);
    ui->pBar->update(); // by itself it moves in steps of nine pixels
}

// The state is given in words, so that nobody has to rely on its colour.
void viewMC::showState()
{
    showBar();
    const auto& look =
        *std::find_if(std::begin(looks), std::end(looks), [this](const Look& l) { return l.activity == activity_; });
    const QString text = QString::fromLatin1(look.text).replace(QLatin1String("%1"),
                                                                QString::number(ui->pBar->value() * 100 / barSteps));
    if (ui->lblState->text() != text) {
        ui->lblState->setText(text);
        ui->btnMC->setAccessibleDescription(text);
    }
    QString machine = QString::fromLatin1(look.machine);
    if (_isActive && machine == QLatin1String("machine")) machine = QStringLiteral("machine-active");
    showImages(machine, QString::fromLatin1(look.state));
}

void viewMC::showImages(const QString& machine, const QString& state)
{
    // Only what changed: this runs for every line of a transfer.
    if (machineImage_ != machine) Images::showIn(*ui->imgMC, machine, machineSize);
    if (stateImage_ != state) Images::showIn(*ui->imgState, state, stateSize);
    machineImage_ = machine;
    stateImage_ = state;
}

// Out of the way until the operator turns to this machine, by pointer or keyboard.
void viewMC::showDeleteButton()
{
    const bool shown = _isActive || underMouse() || ui->btnDeleteIcon->hasFocus() || ui->btnMC->hasFocus();
    ui->btnDeleteIcon->setIcon(shown ? Images::icon(QStringLiteral("delete")) : QIcon());
}

void viewMC::enterEvent(QEnterEvent* event)
{
    QWidget::enterEvent(event);
    showDeleteButton();
}

void viewMC::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    showDeleteButton();
}

bool viewMC::eventFilter(QObject* watched, QEvent* event)
{
    const bool done = QWidget::eventFilter(watched, event);
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        QMetaObject::invokeMethod(this, &viewMC::showDeleteButton, Qt::QueuedConnection); // once the focus has moved
    return done;
}
