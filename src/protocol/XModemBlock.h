// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

/// XModem's 132-byte block: SOH, number, 255 - number, 128 data bytes, checksum.
namespace XModemBlock
{
inline constexpr int dataSize = 128;
inline constexpr int size = 132;
inline constexpr int headSize = 3;

/// How blocks are counted. The first is 1 in either way.
enum class Numbers {
    From1, ///< 1..255 and then 1 again, as the controls that this program was made for want it
    From0, ///< 1..255 and then 0, as standard receivers want it
};

/// The sum of the data bytes modulo 256.
std::uint8_t getCSum(const QByteArray& data);
/// The same for data as text, one byte a character.
QChar getCSum(const QString& data);

/// The block as sent. Data shorter than 128 bytes is filled up with spaces.
QByteArray build(int number, const QByteArray& data);

/// The number after `number`. With From1 never 0; controls rely on it.
int nextNumber(int number, Numbers numbers);

/// Whether a received block is whole and its sum right. The line strips bit 7, so a checksum that arrived below 128 is
/// also right when it equals the sum's low seven bits.
bool isGood(const QByteArray& block);

/// The data bytes of a whole block.
QByteArray data(const QByteArray& block);
} // namespace XModemBlock
