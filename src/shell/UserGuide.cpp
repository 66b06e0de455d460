// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/UserGuide.h"

#include "widgets/MessageBox.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

namespace
{
// Beside the program first, wherever its folder stands; the pages of another version may be installed as well.
QString find(const QString& page)
{
    const QString path = QStringLiteral("varnock/guide/") + page;
    const QString beside = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("../share/") + path);
    if (QFileInfo::exists(beside)) return QDir::cleanPath(beside);
    return QStandardPaths::locate(QStandardPaths::GenericDataLocation, path);
}
} // namespace

void UserGuide::open(QWidget* parent, const QString& page)
{
    const QString path = find(page);
    if (path.isEmpty())
        MessageBox::ask(parent, QStringLiteral("The user guide is not installed on this computer."),
                        QStringLiteral("OK"), {});
    else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        MessageBox::ask(parent, QStringLiteral("No browser could be started. The guide is this file:\r\r") + path,
                        QStringLiteral("OK"), {});
}
