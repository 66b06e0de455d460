// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/History.h"
#include "platform/NotificationCenter.h"
#include "shell/TransferNotice.h"

#include <QMainWindow>
#include <QPointer>
#include <QTimer>

#include <memory>

class AwakeKeeper;
class frmDncMenu;
class HistoryPage;
class MachineList;
struct MachineRecord;
class viewChild;
class viewMC;
namespace Ui
{
class mainWindow;
}

/// The program's starting point: the main window with the machine icons, and the handlers for what icons, menu, child
/// views and setup form report. Main thread; lives as long as the application.
class AppDelegate : public QObject
{
    Q_OBJECT
public:
    AppDelegate();
    ~AppDelegate() override;

    QMainWindow* window() { return &window_; }
    int iCurrentMcIcon = 0; ///< index of the active machine; 0 when none is

    /// Loads the machines, shows their icons and listens to the notifications.
    void applicationDidFinishLaunching();
    /// Brings the main window to the front.
    bool applicationShouldHandleReopen();

    // --- Machines (AppDelegate_machines.cpp) -----------------------------------------------------------------------
    void showAllMcIcons();
    void btnAddMC_Click();
    void btnDeleteIcon_Click(const Notification& notification);
    /// Brings the machine deleted last back, with its settings and to its place.
    void btnUndo_Click();
    /// Removes the machine, its child view and its port. An index below 1 is ignored.
    void removeMcIcon(int index);
    /// Puts the machine at another place of the list. Its view, its port and a transfer under way go with it.
    void moveMachine(int from, int to);
    /// Adds a machine with the same settings behind it.
    void duplicateMachine(int index);
    void MCIcon_Click(const Notification& notification);
    void makeActiveIcon(int index);
    void setupSaveButton_Click(const Notification& notification);
    void btnUp_Click();
    void btnDown_Click();
    void tmrMoveIconPanelToY_Tick();

    // --- Child views (AppDelegate_children.cpp) --------------------------------------------------------------------
    void setupButton_Clicked();
    void sendButton_Clicked();
    void receiveButton_Clicked();
    /// Goes to the active machine's view, wherever it is.
    void showViewButton_Clicked();
    /// Brings an undocked view back: of the machine that the notification names, or of the active one.
    void dockButton_Clicked(const Notification& notification);
    /// Replaces the active machine's child view by one in that mode (see viewChild::Mode).
    void loadDockedChild(int mode);
    void hideAllDockedViews();
    void childGotFocus_Event();
    void dockedChildLeaving_Event(const Notification& notification);

    // --- Programs from outside (AppDelegate_programs.cpp) -----------------------------------------------------------
    /// Asks for each program file which machine it is for, and opens it there. Waits while another question is open.
    void openPrograms(const QStringList& paths);
    /// Opens the machine's send view with that program. Ignored while a question is open.
    void openProgram(int index, const QString& path);

    // --- History (AppDelegate_history.cpp) -------------------------------------------------------------------------
    void historyButton_Clicked();
    /// Of that machine; with no name that of all.
    void showHistory(const QString& machine);
    /// Opens a send view of the machine of that name with this program file; asks which machine, if there is none.
    void openAgain(const QString& machine, const QString& program);

    // --- Window (AppDelegate_window.cpp) ---------------------------------------------------------------------------
    /// From the strip of machines to the whole window, and back, in steps.
    void expandMainMenu();
    void shrinkMainMenu();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void registerObservers();
    bool mayQuit();

    void setUpWindow();
    void placeWindow();
    void showExpandButton();
    void resizeTo(const QRect& geometry);
    void tmrResize_Tick();
    void showScrollButtons();
    void showAbout();
    void addKeys();

    void insertMachine(int index, const std::shared_ptr<MachineRecord>& machine);
    void setUpActiveMachine();
    void offerUndo();
    void renumberMachines();
    double panelY() const;
    void movePanelTo(double y);
    int usableIndex(const Notification& notification) const;
    static bool isDocked(qsizetype mcIndex);
    viewChild* replaceDockedChild();
    void openNextProgram();
    static bool tellIfUnreadable(const QString& path);
    void setBlocked(bool blocked);
    void openMenu(int index);
    void menuClickedElsewhere(const QPoint& place);
    static bool isUndocked(qsizetype mcIndex);
    void showDockedChild();
    void showLogos();
    void showEmptyPane();
    void tellHistoryProblem(const QString& text);

    QMainWindow window_;
    TransferNotice notice_{window_};
    History history_; // outlives the views, which report to it when they end
    std::unique_ptr<HistoryPage> historyPage_;
    std::unique_ptr<Ui::mainWindow> ui;
    std::unique_ptr<MachineList> list_;
    std::unique_ptr<AwakeKeeper> awake_;
    QString msgHeading_, msgDetail_; // of the next message box, above and behind its text, which alone says too little
    QList<std::shared_ptr<MachineRecord>> deleted_; // the last one comes back first; MCINDEX is its place
    QPointer<frmDncMenu> modalMenu;
    QTimer tmrMoveIconPanelToY;
    double fPanelTargetY = 0;     // scroll position that the panel is moving to, in pixels
    QStringList pendingPrograms_; // given to the program, and not asked about yet
    bool isBlocked_ = false;      // by a dialog
    bool isArrangingStrip_ = false;
    bool menuIsExpanded = true;
    double scnLeft = 0, scnBottom = 0; // where the whole window stood before it shrank
    QSize expandedSize_;
    QTimer tmrResize;
    QRect resizeFrom_, resizeTo_;
    int resizeStep_ = 0;
};

/// The icon of that machine; null for an index outside the list.
viewMC* mcIconAt(qsizetype mcIndex);
