// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>

/// What a handler is given: the name, who posted it (may be null) and named values such as "MC", the machine index.
struct Notification {
    QString name;
    QObject* object = nullptr;
    QVariantMap userInfo;
};

/// Carries named events between views that do not know each other. Main thread only; posting is synchronous.
/// Observers that are destroyed are dropped; handlers may add and remove observers while a post is under way.
class NotificationCenter
{
public:
    using Handler = std::function<void(const Notification&)>;

    static NotificationCenter& defaultCenter();

    /// Calls `handler` for every post of `name`; with `object` set only for posts by that object.
    void addObserver(QObject* observer, const QString& name, const QObject* object, Handler handler);

    /// Drops the observer's entries: all of them, or those for `name` when it is not empty.
    void removeObserver(const QObject* observer, const QString& name = {});

    /// Runs the handlers that were registered when the post began and still are when their turn comes.
    void post(const QString& name, QObject* object = nullptr, const QVariantMap& userInfo = {});

private:
    struct Observer {
        QPointer<QObject> observer;
        QString name;
        QPointer<const QObject> object; // a new object at a dead one's address is another one
        bool anyObject;
        Handler handler;
        bool removed = false;
    };
    QList<std::shared_ptr<Observer>> observers_;
};
