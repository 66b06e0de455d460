// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"
#include "ui_mainWindow.h"

#include "config/g.h"
#include "shell/frmDncMenu.h"
#include "shell/MachineButton.h"
#include "shell/viewChild.h"
#include "shell/viewMC.h"

bool AppDelegate::isDocked(qsizetype mcIndex)
{
    const auto* child = childViewAt(mcIndex);
    return child && child->isLoaded() && g::mcIcons[mcIndex]->MCISDOCKED;
}

bool AppDelegate::isUndocked(qsizetype mcIndex)
{
    const auto* child = childViewAt(mcIndex);
    return child && child->isUndocked();
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
    auto* child = replaceDockedChild();
    if (!child) return;
    child->startMode(mode, iCurrentMcIcon);
    showDockedChild();
}

// A new child view for the active machine, not yet started; none if the operator keeps the old one.
viewChild* AppDelegate::replaceDockedChild()
{
    const int index = iCurrentMcIcon;
    if (index < 1 || index >= g::mcIcons.size()) return nullptr;
    if (auto* old = childViewAt(index)) {
        if (!old->mayEnd()) return nullptr;
        old->end(); // closes the port first, so that the new view can open the same device
    }
    expandMainMenu();
    const auto child = std::make_shared<viewChild>();
    g::mcChildViews[index] = child;
    g::mcIcons[index]->MCISDOCKED = true;
    ui->childLayout->addWidget(child.get());
    hideAllDockedViews();
    return child.get();
}

void AppDelegate::showViewButton_Clicked()
{
    auto* child = childViewAt(iCurrentMcIcon);
    if (!child || !child->isWorking()) return;
    if (!child->isUndocked()) expandMainMenu();
    showDockedChild();
    child->window()->activateWindow();
    child->takeFocus();
}

void AppDelegate::dockButton_Clicked(const Notification& notification)
{
    const int named = usableIndex(notification);
    const int index = named > 0 ? named : iCurrentMcIcon;
    if (!isUndocked(index)) return;
    auto* child = childViewAt(index);
    expandMainMenu();
    makeActiveIcon(index);
    ui->childLayout->addWidget(child);
    child->docked();
    showDockedChild();
    applicationShouldHandleReopen();
    child->takeFocus();
}

// In front, wherever the active machine's view is.
void AppDelegate::showDockedChild()
{
    if (isDocked(iCurrentMcIcon)) childViewAt(iCurrentMcIcon)->show();
    if (isUndocked(iCurrentMcIcon)) childViewAt(iCurrentMcIcon)->bringUp();
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

void AppDelegate::dockedChildLeaving_Event(const Notification& notification)
{
    showLogos();
    // A view that is closed had the keyboard focus; the operator goes on at its machine.
    const int index = usableIndex(notification);
    if (index > 0) mcIconAt(index)->button()->setFocus();
}
