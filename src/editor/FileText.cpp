// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/FileText.h"

QByteArray FileText::convert(const char* bytes, qsizetype count)
{
    QByteArray text(2 * count, Qt::Uninitialized); // a character above 127 takes two bytes
    char* out = text.data();
    for (const char* end = bytes + count; bytes != end; ++bytes) {
        const auto code = static_cast<unsigned char>(*bytes);
        if (code == '\n' || code == '\r') {
            if (!lineFeedBefore_) *out++ = '\n';
            lineFeedBefore_ = !lineFeedBefore_;
            continue;
        }
        lineFeedBefore_ = false;
        if (code < 0x80) {
            *out++ = *bytes;
        } else {
            *out++ = static_cast<char>(0xC0 | (code >> 6));
            *out++ = static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    text.truncate(out - text.constData());
    return text;
}
