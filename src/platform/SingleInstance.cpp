// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalSocket>
#include <QLockFile>
#include <QTimer>

#include <algorithm>
#include <memory>

namespace
{
constexpr int answerTime = 2000;              // ms
constexpr int callTime = 10'000;              // ms; a caller that has not hung up by then has hung itself
constexpr qsizetype longestMessage = 1 << 20; // bytes

// What a caller sends: nothing, if it only wants the window; or the mark, each path with a NUL behind it, and one more
// NUL, by which a message that was cut off is told from a whole one.
const QByteArray mark("varnock open\n");

QByteArray messageFor(const QStringList& programs)
{
    if (programs.isEmpty()) return {};
    QByteArray message = mark;
    for (const auto& path : programs)
        message += path.toUtf8() + '\0';
    return message + '\0';
}

// Nothing for a message that is not exactly what another start of the program sends.
QStringList programsIn(const QByteArray& message)
{
    QStringList paths;
    for (const auto& path : message.mid(mark.size()).split('\0'))
        if (!path.isEmpty()) paths << QString::fromUtf8(path);
    const auto isAbsolute = [](const QString& path) { return QDir::isAbsolutePath(path); };
    const bool isSound = messageFor(paths) == message && std::all_of(paths.begin(), paths.end(), isAbsolute);
    return isSound ? paths : QStringList();
}
} // namespace

SingleInstance::SingleInstance(const QString& folder, QObject* parent) : QObject(parent)
{
    // The name is short because a socket's path may have only 108 bytes.
    const QDir settings(folder);
    const QString path = settings.exists() ? settings.canonicalPath() : settings.absolutePath();
    const auto hash = QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Sha1);
    name_ = QStringLiteral("varnock-") + QString::fromLatin1(hash.toHex().left(16));
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, [this] { listenTo(server_.nextPendingConnection()); });
}

// The caller says all it has to say and hangs up.
void SingleInstance::listenTo(QLocalSocket* caller)
{
    const auto message = std::make_shared<QByteArray>();
    const auto listen = [caller, message] {
        *message += caller->read(longestMessage + 1 - message->size());
        if (message->size() > longestMessage) caller->abort();
    };
    const auto finish = [this, caller, message, listen] {
        listen();
        caller->deleteLater();
        take(*message);
    };
    connect(caller, &QLocalSocket::readyRead, this, listen);
    connect(caller, &QLocalSocket::disconnected, this, finish, Qt::SingleShotConnection);
    QTimer::singleShot(callTime, caller, &QLocalSocket::abort);
    if (caller->state() == QLocalSocket::UnconnectedState) finish();
}

void SingleInstance::take(const QByteArray& message)
{
    if (message.size() > longestMessage) return;
    const auto paths = programsIn(message);
    if (message.isEmpty()) Q_EMIT activationRequested();
    if (!paths.isEmpty()) Q_EMIT programsHandedOver(paths);
}

bool SingleInstance::askOwner(const QStringList& programs) const
{
    QLocalSocket socket;
    socket.connectToServer(name_);
    if (!socket.waitForConnected(answerTime)) return false;
    socket.write(messageFor(programs));
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(answerTime)) {
    }
    return true;
}

bool SingleInstance::claim(const QStringList& programs)
{
    // Two programs that start together must not remove each other's socket.
    QLockFile startLock(QDir::temp().filePath(name_ + QStringLiteral(".lock")));
    startLock.tryLock(answerTime);
    if (askOwner(programs)) return false;
    QLocalServer::removeServer(name_); // left behind by a program that was killed
    // Where no socket can be made there is nobody to ask: the operator gets a window all the same.
    return server_.listen(name_) || !askOwner(programs);
}
