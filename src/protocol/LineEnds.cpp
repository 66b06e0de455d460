// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/LineEnds.h"

QByteArray LineEnds::collapseDoubled(QByteArray chunk)
{
    return chunk.replace("\n\n", "\n").replace("\r\r", "\r");
}
