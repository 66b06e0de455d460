// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ShowInFolder.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUrl>

#include <utility>

// The call and its arguments are those of freedesktop.org's file manager interface.
void ShowInFolder::show(const QString& path, std::function<void()> otherwise)
{
    constexpr int patience = 5000; // ms; a file manager may have to be started
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call.setArguments({QStringList(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)), QString()});
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, patience));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, otherwise = std::move(otherwise)] {
        watcher->deleteLater();
        if (watcher->isError()) otherwise();
    });
}
