// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"
#include "ui_mainWindow.h"

#include "config/g.h"
#include "config/NotificationNames.h"
#include "shell/frmDncMenu.h"
#include "shell/MachineButton.h"
#include "shell/viewChild.h"
#include "shell/viewMC.h"

#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double scrollStep = 50;   // pixels per click on an arrow
constexpr double animationStep = 2; // pixels per tick
constexpr int animationTick = 1;    // ms
} // namespace

viewMC* mcIconAt(qsizetype mcIndex)
{
    const bool isMachine = mcIndex >= 0 && mcIndex < g::mcIcons.size();
    return isMachine ? dynamic_cast<viewMC*>(g::mcIcons[mcIndex].get()) : nullptr;
}

int AppDelegate::usableIndex(const Notification& notification) const
{
    bool isNumber = false;
    const int index = notification.userInfo.value(Notifications::machineIndex).toInt(&isNumber);
    return isNumber && index >= 1 && index < g::mcIcons.size() ? index : -1;
}

void AppDelegate::showAllMcIcons()
{
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index)
        addIconToPanel(mcIconAt(index));
    if (auto* first = mcIconAt(1)) makeTabStop(*first);
}

void AppDelegate::addIconToPanel(viewMC* icon)
{
    ui->iconsLayout->insertWidget(ui->iconsLayout->count() - 1, icon); // above the spacer
    icon->refresh();
    icon->show();
    connect(icon->button(), &MachineButton::moveWanted, this,
            [this, icon](int machines) { goToMachine(*icon, machines); });
    connect(icon->button(), &MachineButton::gotFocus, this, [this, icon] { makeTabStop(*icon); });
}

void AppDelegate::goToMachine(const viewMC& from, int machines)
{
    const auto last = static_cast<int>(g::mcIcons.size()) - 1;
    const int index = std::clamp(static_cast<int>(from.MCINDEX) + machines, 1, std::max(1, last));
    auto* icon = mcIconAt(index);
    if (!icon) return;
    icon->button()->setFocus(Qt::TabFocusReason);
    ui->scrIcons->ensureWidgetVisible(icon, 0, 0);
}

// Tab passes the panel in one stop, however many machines there are; arrow keys move within it.
void AppDelegate::makeTabStop(const viewMC& icon)
{
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index)
        mcIconAt(index)->setTabStop(mcIconAt(index) == &icon);
}

void AppDelegate::btnAddMC_Click()
{
    const auto machine = g::makeMcIcon();
    machine->MCINDEX = g::mcIcons.size();
    machine->MCNAME = QStringLiteral("CNC%1").arg(machine->MCINDEX);
    g::mcIcons.append(machine);
    g::mcChildViews.append(g::makeMcChildView());
    addIconToPanel(mcIconAt(machine->MCINDEX));
    g::saveAllMcSettings();
    makeActiveIcon(static_cast<int>(machine->MCINDEX));
    if (auto* child = replaceDockedChild()) child->startSetup(iCurrentMcIcon);
    showDockedChild();
    // The panel takes its new height when the layout has run; only then is there a bottom to move to.
    QTimer::singleShot(0, this, [this] { movePanelTo(ui->scrIcons->verticalScrollBar()->maximum()); });
}

void AppDelegate::btnDeleteIcon_Click(const Notification& notification)
{
    const int index = usableIndex(notification);
    if (index < 0) return;
    if (!g::msgBox(QStringLiteral("Delete the current MC Icon?"), QStringLiteral("Delete"), QStringLiteral("Cancel")))
        return;
    if (auto* child = childViewAt(index); child && !child->mayEnd()) return;
    removeMcIcon(index);
}

void AppDelegate::removeMcIcon(int index)
{
    if (index < 1 || index >= g::mcIcons.size()) return;
    if (auto* child = childViewAt(index)) child->end();
    auto* icon = mcIconAt(index);
    icon->hide();
    icon->setParent(nullptr);
    // The click that brought us here may still be running inside the icon.
    QTimer::singleShot(0, this, [icon = g::mcIcons[index], child = g::mcChildViews[index]] {});
    g::mcIcons.removeAt(index);
    g::mcChildViews.removeAt(index);
    if (iCurrentMcIcon == index) {
        iCurrentMcIcon = 0;
    } else if (iCurrentMcIcon > index) {
        --iCurrentMcIcon;
    }
    renumberMachines();
    const auto last = g::mcIcons.size() - 1;
    if (auto* neighbour = mcIconAt(std::min<qsizetype>(index, last)); neighbour && last > 0)
        neighbour->button()->setFocus();
    g::saveAllMcSettings();
    showLogos();
}

void AppDelegate::renumberMachines()
{
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index) {
        g::mcIcons[index]->MCINDEX = index;
        if (auto* child = childViewAt(index); child && child->isLoaded())
            child->machineChanged(static_cast<int>(index));
    }
}

void AppDelegate::MCIcon_Click(const Notification& notification)
{
    const int index = usableIndex(notification);
    if (index < 0) return;
    makeActiveIcon(index);
    showDockedChild();
    openMenu(index);
}

void AppDelegate::openMenu(int index)
{
    using OpenView = frmDncMenu::OpenView;
    if (modalMenu) modalMenu->close(); // deletes it, but not within its own click
    modalMenu = new frmDncMenu(*g::mcIcons[index], &window_);
    const auto* child = childViewAt(index);
    if (child && child->isWorking()) modalMenu->offerView(child->isUndocked() ? OpenView::Undocked : OpenView::Docked);
    connect(modalMenu, &frmDncMenu::clickedElsewhere, this, &AppDelegate::menuClickedElsewhere);
    modalMenu->showBeside(*mcIconAt(index));
}

// The machine's own card only closes the menu, as a second click on a menu's title does.
void AppDelegate::menuClickedElsewhere(const QPoint& place)
{
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index) {
        auto* icon = mcIconAt(index);
        const bool isHit = icon->visibleRegion().contains(icon->mapFromGlobal(place));
        if (!isHit || index == iCurrentMcIcon) continue;
        icon->button()->setFocus(Qt::MouseFocusReason);
        return icon->btnMC_Click();
    }
}

void AppDelegate::makeActiveIcon(int index)
{
    hideAllDockedViews();
    for (qsizetype other = 1; other < g::mcIcons.size(); ++other)
        mcIconAt(other)->isActive(other == index);
    iCurrentMcIcon = index;
}

void AppDelegate::setupSaveButton_Click(const Notification& notification)
{
    const int index = usableIndex(notification);
    if (index < 0) return;
    mcIconAt(index)->refresh();
    if (auto* child = childViewAt(index); child && child->isLoaded()) child->machineChanged(index);
    showLogos();
}

// A click during the animation continues from its target, any other from where wheel or keys left the panel.
double AppDelegate::panelY() const
{
    return tmrMoveIconPanelToY.isActive() ? fPanelTargetY : ui->scrIcons->verticalScrollBar()->value();
}

void AppDelegate::btnUp_Click()
{
    movePanelTo(panelY() - scrollStep);
}

void AppDelegate::btnDown_Click()
{
    movePanelTo(panelY() + scrollStep);
}

void AppDelegate::movePanelTo(double y)
{
    const int bottom = ui->scrIcons->verticalScrollBar()->maximum();
    fPanelTargetY = std::clamp(y, 0.0, static_cast<double>(bottom));
    tmrMoveIconPanelToY.start(animationTick);
}

void AppDelegate::tmrMoveIconPanelToY_Tick()
{
    auto* bar = ui->scrIcons->verticalScrollBar();
    const double distance = fPanelTargetY - bar->value();
    if (std::abs(distance) < animationStep) {
        bar->setValue(static_cast<int>(std::lround(fPanelTargetY)));
        return;
    }
    bar->setValue(bar->value() + static_cast<int>(std::copysign(animationStep, distance)));
    tmrMoveIconPanelToY.start(animationTick);
}
