// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/CompareMenu.h"

#include "config/g.h"
#include "config/MachineRecord.h"
#include "editor/CompareWindow.h"
#include "transfer/CurrentFile.h"
#include "transfer/ProgramFile.h"

#include <QFileDialog>

CompareMenu::CompareMenu(QWidget* view, const ProgramEditor& editor, const CurrentFile& file,
                         std::function<const MachineRecord&()> machine)
    : QMenu(QStringLiteral("&Compare"), view), view_(view), editor_(editor), file_(file), machine_(std::move(machine))
{
    setObjectName(QStringLiteral("compareMenu"));
    setToolTipsVisible(true);
    auto* withFile = addAction(QStringLiteral("Compare &with file..."), this, &CompareMenu::askForFile);
    withFile->setShortcut(Qt::CTRL | Qt::Key_D);
    view->addAction(withFile);
    sent_ = addAction(QStringLiteral("Compare with the file &sent"), this,
                      [this] { compareWith(machine_().lastSentProgram); });
    connect(this, &QMenu::aboutToShow, this, &CompareMenu::offerSent);
    offerSent();
}

void CompareMenu::offerSent()
{
    const QString& path = machine_().lastSentProgram;
    sent_->setEnabled(!path.isEmpty());
    sent_->setToolTip(path.isEmpty() ? QStringLiteral("No file was sent to this machine since the program started")
                                     : path);
}

void CompareMenu::askForFile()
{
    auto* dialog = file_.compareDialog(machine_());
    connect(dialog, &QFileDialog::fileSelected, this, &CompareMenu::compareWith);
    dialog->open();
}

void CompareMenu::compareWith(const QString& path)
{
    const auto tell = [](const QString& text) { g::msgBox(text, QStringLiteral("OK"), {}); };
    if (!ProgramFile::isReadable(path)) return tell(ProgramFile::unreadable(path));
    if (ProgramFile::isTooLarge(path))
        return tell(QStringLiteral("The file is too large for the editor\r\r%1").arg(path));
    const auto bytes = ProgramFile::read(path);
    if (!bytes) return tell(ProgramFile::unreadable(path));
    (new CompareWindow(editor_, file_.name(), *bytes, path, view_))->show();
}
