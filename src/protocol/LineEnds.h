// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace LineEnds
{
inline bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

/// Turns every LF LF into LF, then every CR CR into CR; one pass each, over this chunk alone.
QByteArray collapseDoubled(QByteArray chunk);
} // namespace LineEnds
