// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/StayAwake.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>

struct StayAwake::Request {
    QDBusUnixFileDescriptor lock; // the login manager's: held until its last copy is closed
    QObject answer;               // gone with the request, so that a late answer is dropped and its lock with it
};

StayAwake::StayAwake(QObject* parent) : QObject(parent) {}

StayAwake::~StayAwake() = default;

// The call and its arguments are those of the login manager, org.freedesktop.login1(5).
void StayAwake::want(bool awake, const QString& why)
{
    if (awake == (request_ != nullptr)) return;
    const bool wasGranted = isGranted();
    request_ = awake ? std::make_unique<Request>() : nullptr;
    if (wasGranted) Q_EMIT grantedChanged();
    if (!awake) return;
    const QString manager = QStringLiteral("org.freedesktop.login1");
    auto call = QDBusMessage::createMethodCall(manager, QStringLiteral("/org/freedesktop/login1"),
                                               manager + QStringLiteral(".Manager"), QStringLiteral("Inhibit"));
    call.setArguments(
        {QStringLiteral("sleep:idle:handle-lid-switch"), QStringLiteral("Varnock"), why, QStringLiteral("block")});
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(call), &request_->answer);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *finished;
        if (reply.isError()) return; // no such service, or not for this user
        request_->lock = reply.value();
        Q_EMIT grantedChanged();
    });
}

bool StayAwake::isGranted() const
{
    return request_ && request_->lock.isValid();
}
