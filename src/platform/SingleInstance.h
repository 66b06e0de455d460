// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocalServer>
#include <QObject>

/// Lets one program at a time own a set of settings. Main thread.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    /// `folder` is where the settings live: programs with different settings do not affect each other.
    explicit SingleInstance(const QString& folder, QObject* parent = nullptr);

    /// True when this program is now the owner, or no owner can be asked. Otherwise the owner has been asked to come to
    /// the front.
    bool claim();

Q_SIGNALS:
    /// Another start of the program asked for our window.
    void activationRequested();

private:
    bool askOwner() const;

    QString name_;
    QLocalServer server_;
};
