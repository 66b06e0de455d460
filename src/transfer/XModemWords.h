// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "protocol/XModemSend.h"

#include <QString>

/// What the operator is told about an XModem send, beside its progress.
namespace XModemWords
{
/// Why nothing moves, while the send runs; empty while all is well.
QString waiting(const XModemSend& send);
/// How much the control had when it cancelled, and what to try where the numbers of the blocks are the likely reason.
QString cancelled(const XModemSend& send);
/// What to do where the control has all blocks but has not said so.
QString unconfirmed();
} // namespace XModemWords
