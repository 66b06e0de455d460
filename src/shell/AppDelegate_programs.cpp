// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"
#include "ui_mainWindow.h"

#include "config/g.h"
#include "shell/MachineChoice.h"
#include "shell/viewChild.h"
#include "transfer/ProgramFile.h"

#include <QTimer>

void AppDelegate::openPrograms(const QStringList& paths)
{
    pendingPrograms_ += paths;
    applicationShouldHandleReopen();
    openNextProgram();
}

// One after the other, and never behind a question that is open: it may be about the very view that would be replaced.
void AppDelegate::openNextProgram()
{
    if (isBlocked_ || pendingPrograms_.isEmpty()) return;
    const QString path = pendingPrograms_.takeFirst();
    if (!tellIfUnreadable(path)) return;
    if (g::mcIcons.size() <= 1) {
        g::msgBox(
            QStringLiteral("There is no machine yet for %1\r\rAdd a machine, then open the program again.").arg(path),
            QStringLiteral("OK"), {});
        return;
    }
    auto* choice = new MachineChoice(path, iCurrentMcIcon, &window_);
    choice->setAttribute(Qt::WA_DeleteOnClose);
    connect(choice, &QDialog::accepted, this, [this, choice, path] { openProgram(choice->machine(), path); });
    choice->open();
}

bool AppDelegate::tellIfUnreadable(const QString& path)
{
    if (ProgramFile::isReadable(path)) return true;
    g::msgBox(ProgramFile::unreadable(path), QStringLiteral("OK"), {});
    return false;
}

void AppDelegate::openProgram(int index, const QString& path)
{
    if (isBlocked_ || index < 1 || index >= g::mcIcons.size() || !tellIfUnreadable(path)) return;
    makeActiveIcon(index);
    if (auto* child = replaceDockedChild()) {
        child->startMode(viewChild::SendMode, index, path);
        showDockedChild();
        applicationShouldHandleReopen();
        child->takeFocus();
    }
    showDockedChild();
}

// A dialog has opened that keeps the operator from the main window, or the last one has closed.
void AppDelegate::setBlocked(bool blocked)
{
    isBlocked_ = blocked;
    if (!blocked) QTimer::singleShot(0, this, &AppDelegate::openNextProgram);
}
