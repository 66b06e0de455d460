// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QWidget;
struct Notification;

/// Tells the operator who works in another window that a transfer has ended or a port was lost, if that is wanted.
/// AppDelegate owns it. Main thread.
class TransferNotice : public QObject
{
    Q_OBJECT
public:
    /// The window is the one that asks for attention.
    explicit TransferNotice(QWidget& window);

    /// The operator's choice, kept over restarts; off at first.
    static bool isWanted();
    static void setWanted(bool wanted);

private:
    void activityChanged(const Notification& notification) const;

    QWidget& window_;
};
