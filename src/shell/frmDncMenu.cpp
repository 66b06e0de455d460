// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/frmDncMenu.h"
#include "ui_frmDncMenu.h"

#include "config/MachineRecord.h"
#include "config/NotificationNames.h"
#include "platform/NotificationCenter.h"
#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <QKeyEvent>
#include <QScreen>

#include <algorithm>
#include <map>

frmDncMenu::frmDncMenu(const MachineRecord& machine, QWidget* parent)
    : QFrame(parent, Qt::Popup), ui(std::make_unique<Ui::frmDncMenu>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    ui->lblMachine->setText(machine.MCNAME);
    ui->lblLine->setText(machine.MCPORT);
    TextLook::dim(*ui->lblLine);
    ui->btnShowView->setIcon(Images::icon(QStringLiteral("view")));
    ui->btnDockView->setIcon(Images::icon(QStringLiteral("dock")));
    ui->btnTX->setIcon(Images::icon(QStringLiteral("send")));
    ui->btnRX->setIcon(Images::icon(QStringLiteral("receive")));
    ui->btnSetup->setIcon(Images::icon(QStringLiteral("setup")));
    ui->btnHistory->setIcon(Images::icon(QStringLiteral("history")));
    ui->btnCloseMenu->setIcon(Images::icon(QStringLiteral("close")));
    connect(ui->btnShowView, &QPushButton::clicked, this, &frmDncMenu::btnShowView_Click);
    connect(ui->btnDockView, &QPushButton::clicked, this, &frmDncMenu::btnDockView_Click);
    connect(ui->btnTX, &QPushButton::clicked, this, &frmDncMenu::btnTX_Click);
    connect(ui->btnRX, &QPushButton::clicked, this, &frmDncMenu::btnRX_Click);
    connect(ui->btnSetup, &QPushButton::clicked, this, &frmDncMenu::btnSetup_Click);
    connect(ui->btnHistory, &QPushButton::clicked, this, &frmDncMenu::btnHistory_Click);
    connect(ui->btnCloseMenu, &QToolButton::clicked, this, &frmDncMenu::btnCloseMenu_Click);
    offerView(OpenView::None);
}

frmDncMenu::~frmDncMenu() = default;

void frmDncMenu::offerView(OpenView view)
{
    ui->btnShowView->setHidden(view == OpenView::None);
    ui->btnDockView->setHidden(view != OpenView::Undocked);
}

void frmDncMenu::showBeside(const QWidget& machineIcon)
{
    adjustSize();
    const QRect available = machineIcon.screen()->availableGeometry();
    QPoint place = machineIcon.mapToGlobal(QPoint(machineIcon.width() + 4, 0));
    place.setX(std::clamp(place.x(), available.left(), std::max(available.left(), available.right() - width())));
    place.setY(std::clamp(place.y(), available.top(), std::max(available.top(), available.bottom() - height())));
    move(place);
    show();
    (ui->btnShowView->isHidden() ? ui->btnTX : ui->btnShowView)->setFocus();
}

// As in any menu: arrows move, Enter and the underlined letters choose. Escape closes it, since it is a popup.
void frmDncMenu::keyPressEvent(QKeyEvent* event)
{
    const std::map<int, QAbstractButton*> letters = {{Qt::Key_S, ui->btnTX},
                                                     {Qt::Key_R, ui->btnRX},
                                                     {Qt::Key_U, ui->btnSetup},
                                                     {Qt::Key_H, ui->btnHistory},
                                                     {Qt::Key_V, ui->btnShowView},
                                                     {Qt::Key_D, ui->btnDockView}};
    if (const auto letter = letters.find(event->key()); letter != letters.end() && letter->second->isVisible()) {
        letter->second->click();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (auto* button = qobject_cast<QAbstractButton*>(focusWidget())) button->click();
    } else {
        QFrame::keyPressEvent(event);
    }
}

// A popup swallows the click that closes it. One on another machine's card is not meant for nobody. Later, because on
// some platforms Qt would repeat a click by itself that closes a popup at once.
void frmDncMenu::mousePressEvent(QMouseEvent* event)
{
    if (rect().contains(event->position().toPoint())) return QFrame::mousePressEvent(event);
    const auto leave = [this, place = event->globalPosition().toPoint()] {
        close();
        Q_EMIT clickedElsewhere(place);
    };
    QMetaObject::invokeMethod(this, leave, Qt::QueuedConnection);
}

void frmDncMenu::choose(const QString& notification)
{
    // Closed first: what the choice opens must not appear behind the menu, and a question it asks may outlive the menu.
    close();
    NotificationCenter::defaultCenter().post(notification);
}

void frmDncMenu::btnShowView_Click()
{
    choose(Notifications::showViewButton_Clicked);
}

void frmDncMenu::btnDockView_Click()
{
    choose(Notifications::dockButton_Clicked);
}

void frmDncMenu::btnSetup_Click()
{
    choose(Notifications::setupButton_Clicked);
}

void frmDncMenu::btnTX_Click()
{
    choose(Notifications::sendButton_Clicked);
}

void frmDncMenu::btnRX_Click()
{
    choose(Notifications::receiveButton_Clicked);
}

void frmDncMenu::btnHistory_Click()
{
    choose(Notifications::historyButton_Clicked);
}

void frmDncMenu::btnCloseMenu_Click()
{
    close();
}
