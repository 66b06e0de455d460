// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StayAwake.h"

class QLabel;

/// Keeps the computer awake while a machine sends, waits for its control, takes in a program or listens for programs
/// that it saves by itself, and says so in the label. AppDelegate owns it. Main thread.
class AwakeKeeper : public QObject
{
    Q_OBJECT
public:
    explicit AwakeKeeper(QLabel& label);

    /// A machine works. Whether the system agrees is another question.
    bool isAwakeWanted() const;

private:
    void refresh();

    QLabel& label_;
    StayAwake awake_;
};
