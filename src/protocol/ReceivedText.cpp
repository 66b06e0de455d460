// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/ReceivedText.h"

#include "protocol/LineEnds.h"
#include "protocol/XModemBlock.h"

#include <algorithm>

namespace
{
using LineEnds::isLineEnd;

constexpr char rubout = 0x7F; // a hole in every track of a tape
constexpr char SUB = 0x1A;

bool isLeader(char c)
{
    return c == '\0' || c == rubout;
}

bool isTapeCode(char c)
{
    return c >= 0x11 && c <= 0x14;
}

// Leader may come before every line, and an empty line may come before the first.
QByteArray withoutTape(const QByteArray& bytes)
{
    QByteArray text;
    text.reserve(bytes.size());
    bool isAtHead = true;
    for (const char c : bytes) {
        if (isTapeCode(c) || (isAtHead && isLeader(c)) || (text.isEmpty() && isLineEnd(c))) continue;
        text += c;
        isAtHead = isLineEnd(c);
    }
    return text;
}

template <typename Condition> void chopWhile(QByteArray& text, qsizetype most, Condition condition)
{
    const auto end = std::find_if_not(text.rbegin(), text.rbegin() + std::min(most, text.size()), condition);
    text.chop(end - text.rbegin());
}
} // namespace

QByteArray ReceivedText::ofTape(const QByteArray& bytes)
{
    QByteArray text = LineEnds::collapseDoubled(withoutTape(bytes));
    chopWhile(text, text.size(), isLeader);
    return text;
}

QByteArray ReceivedText::ofXModem(const QByteArray& bytes)
{
    QByteArray text = withoutTape(bytes);
    chopWhile(text, XModemBlock::dataSize - 1, [](char c) { return c == SUB || c == ' ' || isLeader(c); });
    return text;
}
