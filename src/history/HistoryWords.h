// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/TransferEntry.h"

/// Transfers of the history in an operator's words.
namespace HistoryWords
{
QString direction(TransferEntry::Direction direction);
QString outcome(TransferEntry::Outcome outcome);
} // namespace HistoryWords
