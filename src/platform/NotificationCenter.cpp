// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/NotificationCenter.h"

NotificationCenter& NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::addObserver(QObject* observer, const QString& name, const QObject* object, Handler handler)
{
    observers_.append(
        std::make_shared<Observer>(Observer{observer, name, object, object == nullptr, std::move(handler)}));
}

void NotificationCenter::removeObserver(const QObject* observer, const QString& name)
{
    observers_.removeIf([&](const std::shared_ptr<Observer>& entry) {
        const bool drop = !entry->observer || (entry->observer == observer && (name.isEmpty() || entry->name == name));
        entry->removed = entry->removed || drop; // a post under way may still hold the entry
        return drop;
    });
}

void NotificationCenter::post(const QString& name, QObject* object, const QVariantMap& userInfo)
{
    const Notification notification{name, object, userInfo};
    const auto atStart = observers_; // handlers may change the list
    for (const auto& entry : atStart) {
        const bool wanted = entry->name == name && (entry->anyObject || (object && entry->object == object));
        if (wanted && !entry->removed && entry->observer) entry->handler(notification);
    }
}
