// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/frmDncMenu.h"
#include "ui_frmDncMenu.h"

#include "platform/NotificationCenter.h"
#include "resources/Images.h"

#include <QScreen>

#include <algorithm>

frmDncMenu::frmDncMenu(const QString& machineName, QWidget* parent)
    : QFrame(parent, Qt::Popup), ui(std::make_unique<Ui::frmDncMenu>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    ui->lblMachine->setText(machineName);
    ui->btnTX->setIcon(Images::icon(QStringLiteral("send")));
    ui->btnRX->setIcon(Images::icon(QStringLiteral("receive")));
    ui->btnSetup->setIcon(Images::icon(QStringLiteral("setup")));
    ui->btnCloseMenu->setIcon(Images::icon(QStringLiteral("close")));
    connect(ui->btnTX, &QPushButton::clicked, this, &frmDncMenu::btnTX_Click);
    connect(ui->btnRX, &QPushButton::clicked, this, &frmDncMenu::btnRX_Click);
    connect(ui->btnSetup, &QPushButton::clicked, this, &frmDncMenu::btnSetup_Click);
    connect(ui->btnCloseMenu, &QToolButton::clicked, this, &frmDncMenu::btnCloseMenu_Click);
}

frmDncMenu::~frmDncMenu() = default;

void frmDncMenu::showBeside(const QWidget& machineIcon)
{
    adjustSize();
    const QRect available = machineIcon.screen()->availableGeometry();
    QPoint place = machineIcon.mapToGlobal(QPoint(machineIcon.width() + 4, 0));
    place.setX(std::clamp(place.x(), available.left(), std::max(available.left(), available.right() - width())));
    place.setY(std::clamp(place.y(), available.top(), std::max(available.top(), available.bottom() - height())));
    move(place);
    show();
    ui->btnTX->setFocus();
}

void frmDncMenu::choose(const QString& notification)
{
    // First: what the choice opens must not come up behind the menu, and a question that it raises may outlive the
    // menu.
    close();
    NotificationCenter::defaultCenter().post(notification);
}

void frmDncMenu::btnSetup_Click()
{
    choose(QStringLiteral("setupButton_Clicked"));
}

void frmDncMenu::btnTX_Click()
{
    choose(QStringLiteral("sendButton_Clicked"));
}

void frmDncMenu::btnRX_Click()
{
    choose(QStringLiteral("receiveButton_Clicked"));
}

void frmDncMenu::btnCloseMenu_Click()
{
    close();
}
