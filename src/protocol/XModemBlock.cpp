// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/XModemBlock.h"

#include "protocol/XModemCodes.h"

#include <numeric>

namespace
{

constexpr int checksumAt = 131;
} // namespace

std::uint8_t XModemBlock::getCSum(const QByteArray& data)
{
    return std::accumulate(data.begin(), data.end(), std::uint8_t{0}, [](std::uint8_t sum, char byte) {
        return static_cast<std::uint8_t>(sum + static_cast<std::uint8_t>(byte));
    });
}

QChar XModemBlock::getCSum(const QString& data)
{
    return QChar(getCSum(data.toLatin1()));
}

QByteArray XModemBlock::build(int number, const QByteArray& data)
{
    const QByteArray padded = data.leftJustified(dataSize, ' ');
    QByteArray block;
    block.reserve(size);
    block.append(XModemCodes::SOH);
    block.append(static_cast<char>(number));
    block.append(static_cast<char>(255 - number));
    block.append(padded);
    block.append(static_cast<char>(getCSum(padded)));
    return block;
}

int XModemBlock::nextNumber(int number, Numbers numbers)
{
    if (number < 255) return number + 1;
    return numbers == Numbers::From0 ? 0 : 1;
}

bool XModemBlock::isGood(const QByteArray& block)
{
    if (block.size() != size) return false;
    const auto received = static_cast<std::uint8_t>(block[checksumAt]);
    const std::uint8_t sum = getCSum(data(block));
    return received == sum || (received < 0x80 && received == (sum & 0x7F));
}

QByteArray XModemBlock::data(const QByteArray& block)
{
    return block.mid(headSize, dataSize);
}
