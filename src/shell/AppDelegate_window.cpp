// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"
#include "ui_mainWindow.h"

#include "config/g.h"
#include "shell/AboutWindow.h"
#include "shell/AwakeKeeper.h"
#include "shell/KeysWindow.h"
#include "shell/MachineList.h"
#include "shell/UndoBar.h"
#include "shell/UserGuide.h"
#include "widgets/Images.h"
#include "widgets/Reasons.h"
#include "widgets/TextLook.h"

#include <QApplication>
#include <QCursor>
#include <QScopedValueRollback>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>

#include <algorithm>
#include <functional>

namespace
{
constexpr int smallLogoSize = 28;
constexpr int largeLogoSize = 160;
constexpr int stripCharacters = 20; // of average width, beside an icon's picture
constexpr int frameAllowance = 48;  // pixels of the screen that a window's frame may need
constexpr int leastHeight = 700;    // pixels of a window that does not fill its screen
constexpr int resizeSteps = 8;
constexpr int resizeTick = 15; // ms

QRect screenArea(const QWidget& window)
{
    return window.screen()->availableGeometry();
}

// Full size: most of the screen, but no more than a program view can use.
QSize fullSize(const QRect& area)
{
    const int width = std::clamp(area.width() * 7 / 10, 1080, 1500);
    const int height = std::clamp(area.height() * 3 / 4, 720, 1000);
    return {std::min(width, area.width() - frameAllowance / 2), std::min(height, area.height() - frameAllowance)};
}

QRect keptInside(QRect frame, const QRect& area)
{
    frame.moveLeft(std::clamp(frame.left(), area.left(), std::max(area.left(), area.right() + 1 - frame.width())));
    frame.moveTop(std::clamp(frame.top(), area.top(), std::max(area.top(), area.bottom() + 1 - frame.height())));
    return frame;
}

QRect between(const QRect& from, const QRect& to, int step)
{
    const auto mix = [step](int a, int b) { return a + (b - a) * step / resizeSteps; };
    return {mix(from.x(), to.x()), mix(from.y(), to.y()), mix(from.width(), to.width()),
            mix(from.height(), to.height())};
}
} // namespace

void AppDelegate::setUpWindow()
{
    ui->setupUi(&window_);
    QApplication::setWindowIcon(Images::applicationIcon());
    list_ = std::make_unique<MachineList>(*ui);
    connect(ui->undoBar, &UndoBar::undoWanted, this, &AppDelegate::btnUndo_Click);
    connect(ui->undoBar, &UndoBar::dismissed, this, [this] {
        deleted_.clear();
        offerUndo();
    });
    connect(list_.get(), &MachineList::moveWanted, this, &AppDelegate::moveMachine);
    connect(list_.get(), &MachineList::duplicateWanted, this, &AppDelegate::duplicateMachine);
    connect(list_.get(), &MachineList::programWanted, this, &AppDelegate::openProgram);
    window_.installEventFilter(this);
    ui->scrIcons->installEventFilter(this);
    ui->pnlIcons->installEventFilter(this);
    Images::showIn(*ui->imgSmallLogo, QStringLiteral("logo-small"), smallLogoSize);
    Images::showIn(*ui->imgLogo, QStringLiteral("logo"), largeLogoSize);
    TextLook::enlarge(*ui->lblApp, 1.25);
    TextLook::enlarge(*ui->lblWelcome, 1.5);
    const int textWidth = ui->menuStrip->fontMetrics().averageCharWidth() * stripCharacters;
    ui->menuStrip->setFixedWidth(std::max(ui->menuStrip->sizeHint().width(), textWidth + 90));
    ui->btnAddMC->setIcon(Images::icon(QStringLiteral("add")));
    ui->btnUp->setIcon(Images::icon(QStringLiteral("up")));
    ui->btnDn->setIcon(Images::icon(QStringLiteral("down")));
    ui->btnAbout->setIcon(Images::icon(QStringLiteral("about")));
    ui->btnAllHistory->setIcon(Images::icon(QStringLiteral("history")));
    connect(ui->btnAllHistory, &QPushButton::clicked, this, [this] { showHistory({}); });
    connect(ui->btnAddMC, &QPushButton::clicked, this, &AppDelegate::btnAddMC_Click);
    connect(ui->btnUp, &QToolButton::clicked, this, &AppDelegate::btnUp_Click);
    connect(ui->btnDn, &QToolButton::clicked, this, &AppDelegate::btnDown_Click);
    connect(ui->btnAbout, &QToolButton::clicked, this, &AppDelegate::showAbout);
    connect(ui->btnExpand, &QToolButton::clicked, this,
            [this] { menuIsExpanded ? shrinkMainMenu() : expandMainMenu(); });
    connect(ui->scrIcons->verticalScrollBar(), &QScrollBar::valueChanged, this, &AppDelegate::showScrollButtons);
    connect(ui->scrIcons->verticalScrollBar(), &QScrollBar::rangeChanged, this, &AppDelegate::showScrollButtons);
    ui->btnShowWindow->setIcon(Images::icon(QStringLiteral("view")));
    ui->btnDockHere->setIcon(Images::icon(QStringLiteral("dock")));
    connect(ui->btnShowWindow, &QPushButton::clicked, this, &AppDelegate::showViewButton_Clicked);
    connect(ui->btnDockHere, &QPushButton::clicked, this, [this] { dockButton_Clicked({}); });
    tmrMoveIconPanelToY.setSingleShot(true);
    connect(&tmrMoveIconPanelToY, &QTimer::timeout, this, &AppDelegate::tmrMoveIconPanelToY_Tick);
    connect(&tmrResize, &QTimer::timeout, this, &AppDelegate::tmrResize_Tick);
    TextLook::dim(*ui->lblAwake);
    awake_ = std::make_unique<AwakeKeeper>(*ui->lblAwake);
    addKeys();
    showExpandButton();
    placeWindow();
}

void AppDelegate::placeWindow()
{
    const QRect area = screenArea(window_);
    const QSize size = fullSize(area);
    if (size.height() < leastHeight) window_.setWindowState(Qt::WindowMaximized); // a small screen: all of it
    window_.resize(size);
    window_.move(area.left() + (area.width() - size.width()) / 2,
                 area.top() + (area.height() - frameAllowance - size.height()) / 2);
}

void AppDelegate::showExpandButton()
{
    const QString text = menuIsExpanded ? QStringLiteral("Shrink the window to its machines")
                                        : QStringLiteral("Expand the window to its full size");
    ui->btnExpand->setIcon(Images::icon(menuIsExpanded ? QStringLiteral("shrink") : QStringLiteral("expand")));
    ui->btnExpand->setAccessibleName(text);
    ui->btnExpand->setToolTip(text + QStringLiteral(" (F9)"));
}

void AppDelegate::shrinkMainMenu()
{
    if (!menuIsExpanded) return;
    menuIsExpanded = false;
    if (!tmrResize.isActive()) {
        window_.showNormal(); // a maximised window has no compact size
        scnLeft = window_.x();
        scnBottom = window_.y() + window_.height();
        expandedSize_ = window_.size();
    }
    showExpandButton();
    ui->bBox->hide();
    ui->boxChildContainer->hide();
    const QRect now = window_.geometry();
    const QSize compact(ui->menuStrip->width(), now.height());
    resizeTo(QRect(now.topLeft(), compact));
}

void AppDelegate::expandMainMenu()
{
    if (menuIsExpanded) return;
    menuIsExpanded = true;
    showExpandButton();
    window_.setMaximumWidth(QWIDGETSIZE_MAX);
    ui->bBox->show();
    ui->boxChildContainer->show();
    QRect full(window_.geometry().topLeft(), expandedSize_);
    const bool wasMoved =
        window_.x() != static_cast<int>(scnLeft) || window_.y() + window_.height() != static_cast<int>(scnBottom);
    // It returns to where it stood; a strip that was moved since then grows on the screen that has the pointer.
    const QPoint mouse = QCursor::pos();
    const QRect area = wasMoved && QGuiApplication::screenAt(mouse)
                           ? QGuiApplication::screenAt(mouse)->availableGeometry()
                           : screenArea(window_);
    full.setSize(full.size().boundedTo(area.size()));
    resizeTo(keptInside(full, area));
}

void AppDelegate::resizeTo(const QRect& geometry)
{
    resizeFrom_ = window_.geometry();
    resizeTo_ = geometry;
    resizeStep_ = 0;
    tmrResize.start(resizeTick);
}

void AppDelegate::tmrResize_Tick()
{
    ++resizeStep_;
    window_.setGeometry(between(resizeFrom_, resizeTo_, resizeStep_));
    if (resizeStep_ < resizeSteps) return;
    tmrResize.stop();
    if (!menuIsExpanded) window_.setMaximumWidth(resizeTo_.width());
}

// Hidden where all machines have room without them, disabled at the ends of a longer list.
void AppDelegate::showScrollButtons()
{
    // Each button that comes or goes changes the room, which leads back here before the other one has followed.
    if (isArrangingStrip_) return;
    const QScopedValueRollback arranging(isArrangingStrip_, true);
    const auto* bar = ui->scrIcons->verticalScrollBar();
    int room = ui->scrIcons->height();
    for (const auto* button : {ui->btnUp, ui->btnDn})
        if (!button->isHidden()) room += button->height() + ui->stripLayout->spacing();
    const bool overflows = ui->iconsLayout->sizeHint().height() > room;
    ui->btnUp->setHidden(!overflows);
    ui->btnDn->setHidden(!overflows);
    Reasons::enable(*ui->btnUp, bar->value() > bar->minimum(), QStringLiteral("The first machine is shown"));
    Reasons::enable(*ui->btnDn, bar->value() < bar->maximum(), QStringLiteral("The last machine is shown"));
}

// The small logo stands over a docked view, the large one where there is none.
void AppDelegate::showLogos()
{
    const bool shown = isDocked(iCurrentMcIcon);
    ui->imgSmallLogo->setHidden(!shown);
    ui->imgBogLogo->setHidden(shown);
    showEmptyPane();
}

// Where there is no docked view, the pane says where to go on.
void AppDelegate::showEmptyPane()
{
    const bool isElsewhere = isUndocked(iCurrentMcIcon);
    ui->imgLogo->setHidden(isElsewhere);
    ui->boxUndocked->setHidden(!isElsewhere);
    if (isElsewhere) {
        ui->lblWelcome->setText(g::mcIcons[iCurrentMcIcon]->MCNAME);
        ui->lblHint->setText(QStringLiteral("The view of this machine is in a window of its own."));
        return;
    }
    const bool isEmpty = g::mcIcons.size() <= 1;
    ui->lblWelcome->setText(isEmpty ? QStringLiteral("No machines yet") : QStringLiteral("Varnock"));
    ui->lblHint->setText(isEmpty ? QStringLiteral("Press \"Add machine\" (Ctrl+Shift+N) and enter its settings.")
                                 : QStringLiteral("Click a machine to send a program, receive one, or set it up."));
}

// They work in the windows of undocked views, too.
void AppDelegate::addKeys()
{
    const auto add = [this](const QKeySequence& key, const std::function<void(QWidget*)>& action) {
        auto* shortcut = new QShortcut(key, &window_);
        shortcut->setContext(Qt::ApplicationShortcut);
        connect(shortcut, &QShortcut::activated, this,
                [this, action] { action(QApplication::activeWindow() ? QApplication::activeWindow() : &window_); });
    };
    add(Qt::Key_F1, [](QWidget* parent) { UserGuide::open(parent); });
    add(Qt::CTRL | Qt::Key_F1, [](QWidget* parent) { KeysWindow(parent).exec(); });
}

void AppDelegate::showAbout()
{
    AboutWindow(&window_).exec();
}
