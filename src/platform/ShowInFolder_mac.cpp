// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ShowInFolder.h"

#include <QProcess>

void ShowInFolder::show(const QString& path, std::function<void()> otherwise)
{
    if (!QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), path})) otherwise();
}
