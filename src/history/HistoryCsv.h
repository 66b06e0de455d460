// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/TransferEntry.h"

/// The history as comma-separated values: UTF-8, rows end with CR LF, times are local. A field that holds a comma, a
/// quote or a line end is quoted, and a text that a spreadsheet would take for a formula has an apostrophe in front.
namespace HistoryCsv
{
/// The names of the columns, after the mark by which spreadsheets know UTF-8.
QByteArray head();
QByteArray row(const TransferEntry& entry);
} // namespace HistoryCsv
