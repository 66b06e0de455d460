// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace LineEnds
{
/// Received bytes with every LF LF made LF and every CR CR made CR, in one pass each over this chunk alone.
QByteArray collapseDoubled(QByteArray chunk);
} // namespace LineEnds
