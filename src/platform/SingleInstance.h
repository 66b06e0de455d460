// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocalServer>
#include <QObject>
#include <QStringList>

class QLocalSocket;

/// Lets one program at a time own a set of settings. Main thread.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    /// `folder` is where the settings live: programs with different settings do not affect each other.
    explicit SingleInstance(const QString& folder, QObject* parent = nullptr);

    /// True when this program is now the owner, or no owner can be asked. Otherwise the owner has been asked to come to
    /// the front and to open these program files (absolute paths).
    bool claim(const QStringList& programs = {});

Q_SIGNALS:
    /// Another start of the program asked for our window.
    void activationRequested();
    /// Another start of the program was given these files.
    void programsHandedOver(const QStringList& paths);

private:
    bool askOwner(const QStringList& programs) const;
    void listenTo(QLocalSocket* caller);
    void take(const QByteArray& message);

    QString name_;
    QLocalServer server_;
};
