// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>

namespace cncsim
{
/// The 7-bit code with bit 7 set where that makes the count of one bits even.
inline unsigned char withEvenParity(unsigned char code)
{
    return static_cast<unsigned char>(std::popcount(code) % 2 != 0 ? code | 0x80 : code);
}

/// Whether a received byte has even parity. The DNC program sets bit 7 of a byte without one bits too: its leader
/// NULs arrive as 0x80, and controls skip a leader without checking it.
inline bool hasEvenParity(unsigned char byte)
{
    return std::popcount(byte) % 2 == 0 || byte == 0x80;
}
} // namespace cncsim
