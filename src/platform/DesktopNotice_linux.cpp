// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopNotice.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

// The call and its arguments are those of freedesktop.org's desktop notifications, version 1.2.
void DesktopNotice::show(const QString& heading, const QString& text)
{
    constexpr uint replacesNone = 0;
    constexpr int desktopsOwnTime = -1;
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("org.varnock.Varnock")},
                            {QStringLiteral("sound-name"), QStringLiteral("complete")}};
    call.setArguments({QStringLiteral("Varnock"), replacesNone, QStringLiteral("org.varnock.Varnock"), heading,
                       text.toHtmlEscaped(), QStringList(), hints, desktopsOwnTime});
    QDBusConnection::sessionBus().send(call); // an answer is not waited for: a desktop may have no such service
}
