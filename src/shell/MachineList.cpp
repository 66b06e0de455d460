// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/MachineList.h"
#include "ui_mainWindow.h"

#include "config/g.h"
#include "shell/AppDelegate.h"
#include "shell/MachineButton.h"
#include "shell/viewMC.h"
#include "transfer/RecentMenu.h"

#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>

#include <algorithm>

namespace
{
constexpr int textMargin = 4;        // pixels
constexpr qsizetype filterFrom = 10; // machines; fewer are seen at a glance

bool matches(const MachineRecord& machine, const QString& filter)
{
    return machine.MCNAME.contains(filter, Qt::CaseInsensitive) || machine.MCPORT.contains(filter, Qt::CaseInsensitive);
}
} // namespace

MachineList::MachineList(Ui::mainWindow& ui) : ui_(ui), drag_(*ui.scrIcons, *ui.pnlIcons)
{
    ui_.txtFilter->setTextMargins(textMargin, 0, 0, 0);
    ui_.txtFilter->installEventFilter(this);
    connect(ui_.txtFilter, &QLineEdit::textChanged, this, [this] {
        applyFilter();
        ui_.scrIcons->verticalScrollBar()->setValue(0);
    });
    applyFilter();
}

void MachineList::add(viewMC& icon)
{
    ui_.iconsLayout->insertWidget(static_cast<int>(icon.MCINDEX) - 1, &icon);
    icon.refresh();
    icon.show();
    const auto openProgram = [this, &icon](const QString& path) {
        Q_EMIT programWanted(static_cast<int>(icon.MCINDEX), path);
    };
    connect(&icon, &viewMC::programDropped, this, openProgram, Qt::QueuedConnection); // the drag has to end first
    const auto* button = icon.button();
    connect(button, &MachineButton::gotFocus, this, [this, &icon] { makeTabStop(icon); });
    connect(button, &MachineButton::moveWanted, this, [this, &icon](int cards) { step(icon, cards); });
    connect(button, &MachineButton::pageWanted, this, [this, &icon](int pages) { page(icon, pages); });
    connect(button, &MachineButton::orderWanted, this, [this, &icon](int cards) { moveAmongShown(icon, cards); });
    connect(button, &MachineButton::typed, this, [this, &icon](const QString& text) { goToNamed(icon, text); });
    connect(button, &MachineButton::menuWanted, this, [this, &icon](const QPoint& place) { showMenu(icon, place); });
    connect(button, &MachineButton::dragged, this, [this, &icon](const QPoint& at) { drag_.move(icon, shown(), at); });
    connect(button, &MachineButton::dragCancelled, this, [this] { drag_.end(); });
    connect(button, &MachineButton::dropped, this, [this, &icon] {
        const auto place = drag_.end();
        if (place) putAmongShown(icon, *place);
    });
}

void MachineList::arrange()
{
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index) {
        auto* icon = mcIconAt(index);
        const int place = static_cast<int>(index) - 1;
        if (ui_.iconsLayout->indexOf(icon) == place) continue;
        ui_.iconsLayout->removeWidget(icon);
        ui_.iconsLayout->insertWidget(place, icon);
    }
    applyFilter();
}

void MachineList::goTo(viewMC& icon)
{
    if (icon.isHidden()) ui_.txtFilter->clear();
    icon.button()->setFocus(Qt::TabFocusReason);
    ui_.pnlIcons->layout()->activate(); // a card that has just come, or moved, has its place only then
    ui_.scrIcons->ensureWidgetVisible(&icon, 0, 0);
}

void MachineList::goNear(int index)
{
    const auto icons = shown();
    if (icons.isEmpty()) return;
    const auto isThere = [index](const viewMC* icon) { return icon->MCINDEX >= index; };
    const auto found = std::find_if(icons.begin(), icons.end(), isThere);
    goTo(found == icons.end() ? *icons.last() : **found);
}

// --- Keys ------------------------------------------------------------------------------------------------------------

// The cards that the filter leaves, from top to bottom.
QList<viewMC*> MachineList::shown() const
{
    QList<viewMC*> icons;
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index)
        if (!mcIconAt(index)->isHidden()) icons.append(mcIconAt(index));
    return icons;
}

// Tab passes the panel in one stop, however many machines there are; arrow keys move within it.
void MachineList::makeTabStop(const viewMC& icon)
{
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index)
        mcIconAt(index)->setTabStop(mcIconAt(index) == &icon);
}

void MachineList::step(const viewMC& from, int cards)
{
    const auto icons = shown();
    const auto at = icons.indexOf(&from);
    if (at >= 0) goTo(*icons[std::clamp<qsizetype>(at + cards, 0, icons.size() - 1)]);
}

void MachineList::page(const viewMC& from, int pages)
{
    step(from, pages * std::max(1, ui_.scrIcons->viewport()->height() / from.height()));
}

void MachineList::goToNamed(const viewMC& from, const QString& begin)
{
    auto icons = shown();
    std::rotate(icons.begin(), icons.begin() + icons.indexOf(&from) + 1, icons.end()); // the card itself comes last
    const auto found = std::find_if(icons.begin(), icons.end(), [&begin](const viewMC* icon) {
        return icon->MCNAME.startsWith(begin, Qt::CaseInsensitive);
    });
    if (found != icons.end()) goTo(**found);
}

// --- Order -----------------------------------------------------------------------------------------------------------

// In front of the card that is shown at that place, or behind the last one.
void MachineList::putAmongShown(const viewMC& icon, qsizetype place)
{
    const auto icons = shown();
    const auto before = place < icons.size() ? icons[place]->MCINDEX : icons.last()->MCINDEX + 1;
    const auto to = before > icon.MCINDEX ? before - 1 : before;
    if (to != icon.MCINDEX) Q_EMIT moveWanted(static_cast<int>(icon.MCINDEX), static_cast<int>(to));
}

void MachineList::moveAmongShown(const viewMC& icon, int cards)
{
    const auto icons = shown();
    const auto place = icons.indexOf(&icon) + cards;
    if (place >= 0 && place < icons.size()) putAmongShown(icon, cards > 0 ? place + 1 : place);
}

void MachineList::showMenu(viewMC& icon, const QPoint& place)
{
    auto* menu = new QMenu(&icon);
    menu->setObjectName(QStringLiteral("cardMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    auto* recent = new RecentMenu(menu, [&icon] { return icon.recentPrograms; });
    connect(recent, &RecentMenu::chosen, this,
            [this, &icon](const QString& path) { Q_EMIT programWanted(static_cast<int>(icon.MCINDEX), path); });
    menu->addMenu(recent);
    menu->addSeparator();
    const auto icons = shown();
    auto* up = menu->addAction(QStringLiteral("Move &up\tAlt+Up"), this, [this, &icon] { moveAmongShown(icon, -1); });
    auto* down =
        menu->addAction(QStringLiteral("Move &down\tAlt+Down"), this, [this, &icon] { moveAmongShown(icon, 1); });
    up->setEnabled(icons.first() != &icon);
    down->setEnabled(icons.last() != &icon);
    menu->addAction(QStringLiteral("Dup&licate"), this,
                    [this, &icon] { Q_EMIT duplicateWanted(static_cast<int>(icon.MCINDEX)); });
    menu->addSeparator();
    menu->addAction(QStringLiteral("De&lete\tDel"), &icon, &viewMC::btnDeleteIcon_click);
    menu->popup(place);
}

// --- Filter ----------------------------------------------------------------------------------------------------------

void MachineList::applyFilter()
{
    const bool isOffered = g::mcIcons.size() > filterFrom; // the placeholder counts
    ui_.txtFilter->setHidden(!isOffered);
    if (!isOffered && !ui_.txtFilter->text().isEmpty()) return ui_.txtFilter->clear(); // comes back here
    const viewMC* stop = nullptr;
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index) {
        auto* icon = mcIconAt(index);
        icon->setHidden(!matches(*icon, ui_.txtFilter->text()));
        if (!icon->isHidden() && (!stop || (icon->isTabStop() && !stop->isTabStop()))) stop = icon;
    }
    ui_.lblNoMatch->setHidden(stop || g::mcIcons.size() <= 1);
    if (stop) makeTabStop(*stop);
}

bool MachineList::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
    const auto icons = shown();
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Down:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!icons.isEmpty()) goTo(*icons.first());
        return true;
    case Qt::Key_Escape:
        ui_.txtFilter->clear();
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
}
