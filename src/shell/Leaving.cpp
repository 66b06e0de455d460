// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/Leaving.h"

#include "config/g.h"
#include "shell/viewChild.h"
#include "widgets/MessageBox.h"

#include <QApplication>

#include <algorithm>

namespace
{
using Open = std::vector<OpenWorkWords::MachineWork>;

Open openWork(const QList<viewChild*>& views)
{
    Open open;
    for (const auto* view : views)
        if (const auto work = view->openWork(); !work.isNothing())
            open.push_back({view->iMcIndex, g::mcIcons[view->iMcIndex]->MCNAME, work});
    return open;
}

bool canBeSaved(const Open& open)
{
    return std::any_of(open.begin(), open.end(), [](const auto& each) { return each.work.canBeSaved(); });
}

// The answer was given for what was open before the question. Meanwhile another control may have begun to send.
bool isCovered(const Open& now, const Open& asked)
{
    return std::all_of(now.begin(), now.end(), [&asked](const auto& each) {
        return std::any_of(asked.begin(), asked.end(), [&each](const auto& known) {
            return known.mcIndex == each.mcIndex && known.work.includes(each.work);
        });
    });
}

// While one is saved (the operator may take his time in a dialog), another program may go on arriving: it is saved
// again. So nothing is unsaved in the end.
bool saveAll(const QList<viewChild*>& views)
{
    for (;;) {
        const auto next = std::find_if(views.begin(), views.end(),
                                       [](const viewChild* view) { return view->openWork().canBeSaved(); });
        if (next == views.end()) return true;
        if (!(*next)->save()) return false;
    }
}
} // namespace

bool Leaving::isAllowed(const QList<viewChild*>& views)
{
    Open asked;
    for (Open open = openWork(views); !isCovered(open, asked); open = openWork(views)) {
        asked = open;
        const auto question = open.size() == 1 ? OpenWorkWords::beforeEnding(open.front().machine, open.front().work)
                                               : OpenWorkWords::beforeQuitting(open);
        auto* window = QApplication::activeWindow(); // where the operator is, if not in the view's own window
        const auto answer = MessageBox::choose(window ? window : views.first()->window(), question);
        if (answer == question.last()) return false;
        if (answer == 0 && canBeSaved(open) && !saveAll(views)) return false;
    }
    return true;
}
