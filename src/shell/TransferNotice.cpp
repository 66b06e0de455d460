// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/TransferNotice.h"

#include "config/NotificationNames.h"
#include "platform/DesktopNotice.h"
#include "platform/NotificationCenter.h"
#include "platform/Preferences.h"
#include "shell/viewMC.h"

#include <QApplication>

namespace
{
const QString key = QStringLiteral("Notices");
const QString on = QStringLiteral("true");
const QList<TransferActivity> endings{TransferActivity::Stopped, TransferActivity::Sent, TransferActivity::Unconfirmed,
                                      TransferActivity::Received, TransferActivity::PortLost};
} // namespace

TransferNotice::TransferNotice(QWidget& window) : window_(window)
{
    NotificationCenter::defaultCenter().addObserver(this, Notifications::activityChanged_Event, nullptr,
                                                    [this](const Notification& n) { activityChanged(n); });
}

bool TransferNotice::isWanted()
{
    return Preferences::string(key) == on;
}

void TransferNotice::setWanted(bool wanted)
{
    Preferences::setString(key, wanted ? on : QStringLiteral("false"));
}

void TransferNotice::activityChanged(const Notification& notification) const
{
    const auto* icon = dynamic_cast<viewMC*>(notification.object);
    if (!icon || !endings.contains(icon->activity())) return;
    if (QApplication::activeWindow() || !isWanted()) return;
    DesktopNotice::show(icon->MCNAME, icon->stateText());
    QApplication::alert(&window_);
    QApplication::beep();
}
