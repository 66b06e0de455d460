// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/KeptFiles.h"
#include "platform/OrderedQueue.h"

#include <QObject>

#include <memory>

/// Writes the programs that a receive view saves by itself, in the background: a folder on a network may keep a write
/// waiting for a minute. The view's list owns it; what was begun is still written when that is gone. Main thread.
class ProgramSaver : public QObject
{
    Q_OBJECT
public:
    struct Answer {
        int number = 0; ///< of the program
        KeptFiles::Result file;
        qint64 lines = 0; ///< of the file, as is
        qint64 bytes = 0;
    };

    explicit ProgramSaver(QObject* parent = nullptr);
    ~ProgramSaver() override;

    /// `order` has the bytes as they came; what does not belong into a file is left out of them.
    void save(int number, const KeptFiles::Order& order, bool isXModem);
    /// Waits for what is being written, but not for longer than anybody notices.
    void settle();

Q_SIGNALS:
    void answered(const ProgramSaver::Answer& answer);

private:
    struct Shared;
    void deliver();

    OrderedQueue queue_;
    const std::shared_ptr<Shared> shared_; // with the tasks
};
