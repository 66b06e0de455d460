// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widgets/MessageBox.h"

#include <QString>

#include <vector>

/// What would be lost if a machine's view ended now. A value: each working view reports its own.
struct OpenWork {
    enum class Transfer {
        None,
        Running, ///< sending, or waiting for the control
        Arriving,
        Stopped, ///< a send that could still continue
    };
    enum class Unsaved { Nothing, Program, Setup };

    Transfer transfer = Transfer::None;
    Unsaved unsaved = Unsaved::Nothing; ///< is nowhere but in the view
    QString program;                    ///< its file's name, empty without a file
    qint64 line = 0;                    ///< where the send was stopped

    bool isNothing() const { return transfer == Transfer::None && unsaved == Unsaved::Nothing; }
    bool canBeSaved() const { return unsaved != Unsaved::Nothing; }
    /// Whoever decided about this has decided about `other`.
    bool includes(const OpenWork& other) const
    {
        return (other.transfer == Transfer::None || other.transfer == transfer) &&
               (other.unsaved == Unsaved::Nothing || other.unsaved == unsaved);
    }
};

/// The questions about open work, in words.
namespace OpenWorkWords
{
/// Before the view of that machine ends. If there is something to save, the first answer is to save it. The last is
/// Cancel.
MessageBox::Question beforeEnding(const QString& machine, const OpenWork& work);

struct MachineWork {
    int mcIndex;
    QString machine;
    OpenWork work;
};
/// Before the program ends with open work at several machines; the answers are as above.
MessageBox::Question beforeQuitting(const std::vector<MachineWork>& all);
} // namespace OpenWorkWords
