// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Preferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

namespace
{
QSettings open()
{
    return QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Varnock"),
                     QStringLiteral("Varnock"));
}
} // namespace

std::optional<QString> Preferences::string(const QString& key)
{
    const auto settings = open();
    if (!settings.contains(key)) return std::nullopt;
    return settings.value(key).toString();
}

void Preferences::setString(const QString& key, const QString& text)
{
    auto settings = open();
    settings.setValue(key, text);
    settings.sync();
}

void Preferences::dropLeftoverLock()
{
    QFile::remove(open().fileName() + QStringLiteral(".lock"));
}

QString Preferences::folder()
{
    QString path = QFileInfo(open().fileName()).absolutePath();
    QDir().mkpath(path);
    return path;
}
