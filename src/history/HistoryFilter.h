// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/TransferEntry.h"

#include <QDate>

#include <optional>

/// Which transfers of the history are wanted. What is not set does not matter.
struct HistoryFilter {
    QString machine; ///< the name as it was at the time
    QString program; ///< a part of the program's name or path; large and small letters are the same
    QDate from;      ///< first day on which the transfer may have begun, local time
    QDate to;        ///< last day
    std::optional<TransferEntry::Outcome> outcome;

    bool operator==(const HistoryFilter&) const = default;
};
