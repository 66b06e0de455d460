// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalSocket>
#include <QLockFile>

namespace
{
constexpr int answerTime = 2000; // ms
}

SingleInstance::SingleInstance(const QString& folder, QObject* parent) : QObject(parent)
{
    // The name is short because a socket's path may have only 108 bytes.
    const QDir settings(folder);
    const QString path = settings.exists() ? settings.canonicalPath() : settings.absolutePath();
    const auto hash = QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Sha1);
    name_ = QStringLiteral("varnock-") + QString::fromLatin1(hash.toHex().left(16));
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, [this] {
        delete server_.nextPendingConnection();
        Q_EMIT activationRequested();
    });
}

bool SingleInstance::askOwner() const
{
    QLocalSocket socket;
    socket.connectToServer(name_);
    return socket.waitForConnected(answerTime);
}

bool SingleInstance::claim()
{
    // Two programs that start together must not remove each other's socket.
    QLockFile startLock(QDir::temp().filePath(name_ + QStringLiteral(".lock")));
    startLock.tryLock(answerTime);
    if (askOwner()) return false;
    QLocalServer::removeServer(name_); // left behind by a program that was killed
    // Where no socket can be made there is nobody to ask: the operator gets a window all the same.
    return server_.listen(name_) || !askOwner();
}
