// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"
#include "ui_mainWindow.h"

#include "config/g.h"
#include "config/NotificationNames.h"
#include "shell/frmDncMenu.h"
#include "shell/MachineButton.h"
#include "shell/MachineList.h"
#include "shell/UndoBar.h"
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
        list_->add(*mcIconAt(index));
    list_->arrange();
}

void AppDelegate::btnAddMC_Click()
{
    const auto machine = g::makeMcIcon();
    const auto index = static_cast<int>(g::mcIcons.size());
    machine->MCNAME = QStringLiteral("CNC%1").arg(index);
    insertMachine(index, machine);
    setUpActiveMachine();
    // The panel takes its new height when the layout has run; only then is there a bottom to move to.
    QTimer::singleShot(0, this, [this] { movePanelTo(ui->scrIcons->verticalScrollBar()->maximum()); });
}

// The new machine is then the active one.
void AppDelegate::insertMachine(int index, const std::shared_ptr<MachineRecord>& machine)
{
    g::mcIcons.insert(index, machine);
    g::mcChildViews.insert(index, g::makeMcChildView());
    renumberMachines();
    list_->add(*mcIconAt(index));
    list_->arrange();
    g::saveAllMcSettings();
    makeActiveIcon(index);
    list_->goTo(*mcIconAt(index));
}

void AppDelegate::setUpActiveMachine()
{
    if (auto* child = replaceDockedChild()) child->startSetup(iCurrentMcIcon);
    showDockedChild();
}

void AppDelegate::moveMachine(int from, int to)
{
    const auto last = g::mcIcons.size() - 1;
    if (from == to || std::min(from, to) < 1 || std::max(from, to) > last) return;
    g::mcIcons.move(from, to);
    g::mcChildViews.move(from, to);
    if (iCurrentMcIcon == from) {
        iCurrentMcIcon = to;
    } else if (from < iCurrentMcIcon && iCurrentMcIcon <= to) {
        --iCurrentMcIcon;
    } else if (to <= iCurrentMcIcon && iCurrentMcIcon < from) {
        ++iCurrentMcIcon;
    }
    renumberMachines();
    list_->arrange();
    g::saveAllMcSettings();
    list_->goTo(*mcIconAt(to));
}

void AppDelegate::duplicateMachine(int index)
{
    if (index < 1 || index >= g::mcIcons.size()) return;
    const auto isTaken = [](const QString& name) {
        return std::any_of(g::mcIcons.begin() + 1, g::mcIcons.end(),
                           [&name](const auto& machine) { return machine->MCNAME == name; });
    };
    const auto copy = g::makeMcIcon();
    copy->takeSettings(*g::mcIcons[index]);
    copy->lastSentProgram.clear();
    const QString name = copy->MCNAME + QStringLiteral(" copy");
    copy->MCNAME = name;
    for (int number = 2; isTaken(copy->MCNAME); ++number)
        copy->MCNAME = QStringLiteral("%1 %2").arg(name).arg(number);
    insertMachine(index + 1, copy);
    setUpActiveMachine(); // it has the other machine's port
}

void AppDelegate::btnDeleteIcon_Click(const Notification& notification)
{
    const int index = usableIndex(notification);
    if (index < 0) return;
    msgHeading_ = QStringLiteral("Delete %1").arg(g::mcIcons[index]->MCNAME);
    msgDetail_ = QStringLiteral(" Its settings go, too; Undo brings them back for as long as this window is open.");
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
    const auto kept = std::make_shared<MachineRecord>();
    kept->takeSettings(*g::mcIcons[index]);
    kept->recentPrograms = g::mcIcons[index]->recentPrograms; // a duplicate has none
    kept->MCINDEX = index;
    deleted_.append(kept);
    offerUndo();
    g::mcIcons.removeAt(index);
    g::mcChildViews.removeAt(index);
    if (iCurrentMcIcon == index) {
        iCurrentMcIcon = 0;
    } else if (iCurrentMcIcon > index) {
        --iCurrentMcIcon;
    }
    renumberMachines();
    list_->arrange();
    list_->goNear(index);
    g::saveAllMcSettings();
    showLogos();
}

void AppDelegate::offerUndo()
{
    ui->undoBar->setHidden(deleted_.isEmpty());
    if (!deleted_.isEmpty()) ui->undoBar->offer(deleted_.last()->MCNAME);
}

void AppDelegate::btnUndo_Click()
{
    if (deleted_.isEmpty()) return;
    const auto kept = deleted_.takeLast();
    const auto machine = g::makeMcIcon();
    machine->takeSettings(*kept);
    machine->recentPrograms = kept->recentPrograms;
    insertMachine(static_cast<int>(std::min<qint64>(kept->MCINDEX, g::mcIcons.size())), machine);
    showDockedChild();
    offerUndo();
}

void AppDelegate::renumberMachines()
{
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index) {
        g::mcIcons[index]->MCINDEX = index;
        if (auto* child = childViewAt(index); child && child->isLoaded()) child->machineMoved(static_cast<int>(index));
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
