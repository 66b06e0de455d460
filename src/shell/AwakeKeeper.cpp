// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AwakeKeeper.h"

#include "config/g.h"
#include "config/NotificationNames.h"
#include "platform/NotificationCenter.h"
#include "shell/viewMC.h"

#include <QLabel>

#include <algorithm>

namespace
{
const QList<TransferActivity> busy{TransferActivity::Waiting, TransferActivity::Sending, TransferActivity::Held,
                                   TransferActivity::Still, TransferActivity::Receiving};
const QList<TransferActivity> listening{TransferActivity::Listening, TransferActivity::Received};

bool isBusy(const std::shared_ptr<MachineRecord>& machine)
{
    const auto* icon = dynamic_cast<const viewMC*>(machine.get());
    if (!icon) return false;
    const bool savesByItself = icon->toFiles.isOn && listening.contains(icon->activity());
    return savesByItself || busy.contains(icon->activity());
}
} // namespace

AwakeKeeper::AwakeKeeper(QLabel& label) : label_(label)
{
    label_.hide();
    connect(&awake_, &StayAwake::grantedChanged, &label_, [this] { label_.setHidden(!awake_.isGranted()); });
    for (const auto& name : {Notifications::activityChanged_Event, Notifications::toFilesChanged_Event})
        NotificationCenter::defaultCenter().addObserver(this, name, nullptr,
                                                        [this](const Notification&) { refresh(); });
}

bool AwakeKeeper::isAwakeWanted() const
{
    return std::any_of(g::mcIcons.cbegin(), g::mcIcons.cend(), isBusy);
}

void AwakeKeeper::refresh()
{
    awake_.want(isAwakeWanted(), QStringLiteral("NC programs are on their way to or from machines"));
}
