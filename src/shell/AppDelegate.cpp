// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"
#include "ui_mainWindow.h"

#include "config/g.h"
#include "config/NotificationNames.h"
#include "history/HistoryPage.h"
#include "shell/AwakeKeeper.h"
#include "shell/Leaving.h"
#include "shell/MachineList.h"
#include "shell/viewChild.h"
#include "shell/viewMC.h"
#include "widgets/MessageBox.h"

#include <QApplication>
#include <QStandardPaths>

#include <utility>

AppDelegate::AppDelegate()
    : history_(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)),
      ui(std::make_unique<Ui::mainWindow>())
{
    connect(&history_, &History::problem, this, &AppDelegate::tellHistoryProblem);
    g::makeMcIcon = [] { return std::make_shared<viewMC>(); };
    g::makeMcChildView = [] { return std::make_shared<viewChild>(); };
    g::showMessage = [this](const QString& text, const QString& first, const QString& second) {
        if (msgHeading_.isEmpty()) return MessageBox::ask(&window_, text, first, second);
        // For this box alone: another may open above it.
        const QString heading = std::exchange(msgHeading_, {});
        return MessageBox::choose(&window_, {heading, text + std::exchange(msgDetail_, {}), {first, second}}) == 0;
    };
    setUpWindow();
}

AppDelegate::~AppDelegate()
{
    NotificationCenter::defaultCenter().removeObserver(this);
    // The list owns icons and child views; the window must not delete them as well.
    for (qsizetype index = 0; index < g::mcIcons.size(); ++index) {
        if (auto* child = childViewAt(index)) child->end();
        if (auto* icon = mcIconAt(index)) icon->setParent(nullptr);
    }
    g::mcChildViews.clear();
    g::mcIcons.clear();
    g::showMessage = nullptr;
}

void AppDelegate::applicationDidFinishLaunching()
{
    g::readAllMcSettings();
    if (g::mcIcons.isEmpty()) {
        // The stored text held no machine. The placeholder is needed all the same: otherwise the first machine added
        // would take its place and never be shown.
        g::mcIcons.append(g::makeMcIcon());
        g::mcChildViews.append(g::makeMcChildView());
    }
    showAllMcIcons();
    registerObservers();
    showLogos();
}

void AppDelegate::registerObservers()
{
    using Handler = void (AppDelegate::*)(const Notification&);
    using PlainHandler = void (AppDelegate::*)();
    auto& nc = NotificationCenter::defaultCenter();
    const auto observe = [&](QLatin1String name, Handler handler) {
        nc.addObserver(this, name, nullptr, [this, handler](const Notification& n) { (this->*handler)(n); });
    };
    const auto observePlain = [&](QLatin1String name, PlainHandler handler) {
        nc.addObserver(this, name, nullptr, [this, handler](const Notification&) { (this->*handler)(); });
    };
    observe(Notifications::MCIcon_Click, &AppDelegate::MCIcon_Click);
    observe(Notifications::btnDeleteIcon_Click, &AppDelegate::btnDeleteIcon_Click);
    observe(Notifications::setupSaveButton_Click, &AppDelegate::setupSaveButton_Click);
    observePlain(Notifications::setupButton_Clicked, &AppDelegate::setupButton_Clicked);
    observePlain(Notifications::sendButton_Clicked, &AppDelegate::sendButton_Clicked);
    observePlain(Notifications::receiveButton_Clicked, &AppDelegate::receiveButton_Clicked);
    observePlain(Notifications::historyButton_Clicked, &AppDelegate::historyButton_Clicked);
    observePlain(Notifications::showViewButton_Clicked, &AppDelegate::showViewButton_Clicked);
    observe(Notifications::dockButton_Clicked, &AppDelegate::dockButton_Clicked);
    observePlain(Notifications::childGotFocus_Event, &AppDelegate::childGotFocus_Event);
    observe(Notifications::dockedChildLeaving_Event, &AppDelegate::dockedChildLeaving_Event);
}

bool AppDelegate::applicationShouldHandleReopen()
{
    window_.setWindowState(window_.windowState() & ~Qt::WindowMinimized);
    window_.show();
    window_.raise();
    auto* dialog = isBlocked_ ? QApplication::activeModalWidget() : nullptr; // keeps the keyboard
    (dialog ? dialog : &window_)->activateWindow();
    return true;
}

bool AppDelegate::mayQuit()
{
    QList<viewChild*> views;
    for (qsizetype index = 1; index < g::mcChildViews.size(); ++index)
        if (auto* child = childViewAt(index)) views << child;
    return Leaving::isAllowed(views);
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest) {
        if (watched != &window_) showScrollButtons();
    }
    if (watched == &window_ && event->type() == QEvent::WindowBlocked) setBlocked(true);
    if (watched == &window_ && event->type() == QEvent::WindowUnblocked) setBlocked(false);
    if (watched != &window_ || event->type() != QEvent::Close) return QObject::eventFilter(watched, event);
    if (!mayQuit()) {
        event->ignore();
        return true;
    }
    // Undocked windows go with the main window.
    for (qsizetype index = 1; index < g::mcChildViews.size(); ++index)
        if (auto* child = childViewAt(index)) child->end();
    QApplication::quit();
    return false;
}
