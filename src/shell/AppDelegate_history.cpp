// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"

#include "config/g.h"
#include "history/HistoryPage.h"
#include "widgets/MessageBox.h"

#include <algorithm>

void AppDelegate::historyButton_Clicked()
{
    const bool isMachine = iCurrentMcIcon > 0 && iCurrentMcIcon < g::mcIcons.size();
    showHistory(isMachine ? g::mcIcons[iCurrentMcIcon]->MCNAME : QString());
}

void AppDelegate::showHistory(const QString& machine)
{
    if (!historyPage_) {
        historyPage_ = std::make_unique<HistoryPage>(history_);
        connect(historyPage_.get(), &HistoryPage::openAgain, this, &AppDelegate::openAgain);
    }
    historyPage_->showMachine(machine);
}

void AppDelegate::openAgain(const QString& machine, const QString& program)
{
    const auto found = std::find_if(g::mcIcons.begin() + 1, g::mcIcons.end(),
                                    [&machine](const auto& icon) { return icon->MCNAME == machine; });
    if (found == g::mcIcons.end()) return openPrograms({program});
    openProgram(static_cast<int>(found - g::mcIcons.begin()), program);
}

// Not a question: whoever is working at a machine just then goes on.
void AppDelegate::tellHistoryProblem(const QString& text)
{
    MessageBox::tell(&window_, text);
}
