// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/ProgramEnd.h"

qsizetype ProgramEnd::take(const QByteArray& bytes)
{
    for (qsizetype at = 0; at < bytes.size(); ++at) {
        const auto byte = static_cast<unsigned char>(bytes[at]);
        if (byte == '\r' || byte == '\n') isAtLineHead_ = true;
        if (byte <= ' ' || byte == 0x7F) continue; // leader, line ends and tape codes
        if (isClosed_) return at;
        const bool isPercent = byte == '%' && isAtLineHead_;
        if (isPercent) {
            isOpened_ = true;
            isClosed_ = hasText_;
        }
        hasText_ = hasText_ || !isPercent;
        isAtLineHead_ = false;
    }
    return bytes.size();
}
