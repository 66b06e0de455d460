// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/Remarks.h"

#include <algorithm>

void Remarks::add(RemarkKind kind, QByteArrayView text, qsizetype line)
{
    const auto index = static_cast<std::size_t>(kind);
    ++counts_[index];
    const QByteArray kept = text.first(std::min(text.size(), longestText)).toByteArray();
    const QByteArray key = static_cast<char>('0' + index) + kept;
    const auto place = places_.constFind(key);
    if (place != places_.constEnd()) {
        Remark& remark = list_[*place];
        remark.lastLine = line;
        ++remark.count;
        return;
    }
    if (kept_[index] == mostOfAKind) return;
    ++kept_[index];
    places_.insert(key, list_.size());
    list_.append({kind, kept, line, line, 1});
}
