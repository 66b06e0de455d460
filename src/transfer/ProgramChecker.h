// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LatestWork.h"
#include "program/ProgramCheck.h"

#include <QObject>
#include <QTimer>

class ProgramEditor;

/// Checks the program in an editor again whenever it has changed, in the background and on a copy, so that typing takes
/// no longer. Owned by the line that shows the findings. Main thread.
class ProgramChecker : public QObject
{
    Q_OBJECT
public:
    /// The editor outlives this object.
    ProgramChecker(const ProgramEditor& editor, QObject* parent);

    void setRules(const CheckRules& rules);
    /// Nothing is checked while paused; what has to be is checked afterwards.
    void setPaused(bool isPaused);

Q_SIGNALS:
    void checked(const CheckReport& report);
    /// The answer takes time, and the last one is of another text.
    void outOfDate();

private:
    void checkSoon();
    void copyPiece();
    void finish(const CheckReport& report);

    const ProgramEditor& editor_;
    CheckRules rules_;
    bool isPaused_ = false;
    bool isDue_ = false;
    QByteArray copy_; // as much of the text as is copied
    QTimer tmrCopy_;
    QTimer tmrSlow_;
    LatestWork work_;
};
