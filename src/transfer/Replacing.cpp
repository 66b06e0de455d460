// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/Replacing.h"

#include "transfer/OpenWork.h"
#include "transfer/ProgramFile.h"
#include "transfer/viewTX.h"

namespace
{
bool isAllowed(viewTX& view)
{
    // Only the text is at stake: what goes on arriving comes behind the program that is opened.
    OpenWork work = view.openWork();
    work.transfer = OpenWork::Transfer::None;
    if (!work.canBeSaved()) return true;
    const auto question = OpenWorkWords::beforeEnding(view.mc->MCNAME, work);
    const auto answer = MessageBox::choose(view.window(), question);
    if (answer == question.last()) return false;
    return answer != 0 || view.save();
}
} // namespace

void Replacing::openFile(viewTX& view, const QString& path)
{
    if (ProgramFile::isReadable(path) && isAllowed(view)) view.openFile(path);
}
