// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"
#include "ui_mainWindow.h"

#include "config/g.h"
#include "shell/frmDncMenu.h"
#include "shell/viewChild.h"
#include "shell/viewMC.h"

bool AppDelegate::isDocked(qsizetype mcIndex)
{
    const auto* child = childViewAt(mcIndex);
    return child && child->isLoaded() && g::mcIcons[mcIndex]->MCISDOCKED;
}

void AppDelegate::setupButton_Clicked()
{
    loadDockedChild(viewChild::SetupMode);
}

void AppDelegate::sendButton_Clicked()
{
    loadDockedChild(viewChild::SendMode);
}

void AppDelegate::receiveButton_Clicked()
{
    loadDockedChild(viewChild::ReceiveMode);
}

void AppDelegate::loadDockedChild(int mode)
{
    const int index = iCurrentMcIcon;
    if (index < 1 || index >= g::mcIcons.size()) return;
    if (auto* old = childViewAt(index)) {
        if (!old->mayEnd()) return;
        old->end(); // closes the port first, so that the new view can open the same device
    }
    expandMainMenu();
    const auto child = std::make_shared<viewChild>();
    g::mcChildViews[index] = child;
    g::mcIcons[index]->MCISDOCKED = true;
    ui->childLayout->addWidget(child.get());
    hideAllDockedViews();
    child->startMode(mode, index);
    showDockedChild();
}

void AppDelegate::showDockedChild()
{
    if (isDocked(iCurrentMcIcon)) childViewAt(iCurrentMcIcon)->show();
    showLogos();
}

void AppDelegate::hideAllDockedViews()
{
    for (qsizetype index = 1; index < g::mcChildViews.size(); ++index)
        if (isDocked(index)) childViewAt(index)->hide();
    ui->imgBogLogo->show();
    ui->imgSmallLogo->hide();
}

void AppDelegate::childGotFocus_Event()
{
    if (modalMenu) modalMenu->close(); // it belongs to the main window, which the operator has left
}

void AppDelegate::dockedChildLeaving_Event()
{
    showLogos();
}
