// SPDX-License-Identifier: GPL-3.0-or-later
// Any notation that an operator types becomes bytes that a 7-bit line carries.
#include "config/ControlCodes.h"
#include "config/g.h"
#include "config/StringTools.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace
{
void isSevenBit(const QByteArray& bytes)
{
    PROMISE(std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<unsigned char>(byte) < 128; }));
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray input = Fuzz::bytes(data, size);
    const QString text = QString::fromUtf8(input);
    isSevenBit(g::getBytes(ControlCodes::startOrEnd(text)));
    isSevenBit(g::getBytes(ControlCodes::endOfBlock(text)));
    const auto number = StringTools::parseInteger(text);
    PROMISE(g::iVal(text) == number.value_or(0));
    if (number) PROMISE(StringTools::parseInteger(StringTools::ToString(*number)) == number);

    // Received bytes are characters one to one, and those of 7 bits go out again as they came.
    const QString received = g::getString(input);
    PROMISE(received.size() == input.size());
    QByteArray expected = input;
    std::replace_if(
        expected.begin(), expected.end(), [](char c) { return static_cast<unsigned char>(c) > 127; }, '?');
    PROMISE(g::getBytes(received) == expected);

    const auto characters = StringTools::characters(text);
    PROMISE(characters.join(QString()) == text);
    const auto at = static_cast<qsizetype>(size / 2);
    PROMISE(StringTools::subString(text, 0, at) + StringTools::subString(text, at) == text);
    return 0;
}
