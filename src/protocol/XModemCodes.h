// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// XModem's control bytes (ISO 646 transmission controls).
namespace XModemCodes
{
inline constexpr char SOH = 1;  // begins a block
inline constexpr char EOT = 4;  // no further block
inline constexpr char ACK = 6;  // the block is taken
inline constexpr char NAK = 21; // asks for the first block, or for the same one again
inline constexpr char CAN = 24; // ends the transfer at once
} // namespace XModemCodes
