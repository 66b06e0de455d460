// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>

namespace cncsim
{
/// What goes wrong at the end of a program.
enum class EndFault {
    None,
    EotLost,      ///< the first EOT does not reach the receiver
    EotRefused,   ///< receiving: answers the first EOT with NAK
    AckLost,      ///< the first ACK of EOT does not reach the sender
    NotConfirmed, ///< no ACK of EOT ever does; receiving: the control says nothing more
};

/// How the control's XModem side behaves. Faults name a block, counted from 1; 0 is never.
struct XModemSettings {
    int pollMs = 3000;         ///< silence after which it asks with NAK, refuses a stalled block or repeats EOT
    char padding = 0x1A;       ///< SUB; fills the last block that the control sends
    bool plainNakOnly = false; ///< sending: knows NAK as 0x15 only, as 8-bit peers do, not with its parity bit (0x95)
    bool standardNumbers = false; ///< block 255 is followed by 0, not by 1
    EndFault endFault = EndFault::None;
    std::size_t nakBlock = 0;         ///< receiving: refuses this good block once
    std::size_t spoilBlock = 0;       ///< sending: first sends it with a wrong checksum
    std::size_t duplicateBlock = 0;   ///< sending: sends it once more after its ACK, as if the ACK was lost
    std::size_t stallInBlock = 0;     ///< sending: stops inside it until the receiver asks again
    std::size_t cancelAtBlock = 0;    ///< cancels instead of acknowledging or sending it
    std::size_t silentAfterBlock = 0; ///< says nothing more once it is acknowledged
};

namespace xmodem
{
constexpr char soh = 1;
constexpr char eot = 4;
constexpr char ack = 6;
constexpr char nak = 21;
constexpr char can = 24;
const std::string cancel(2, can); // peers want two, so that a damaged byte does not end a transfer
constexpr std::size_t dataSize = 128;
constexpr std::size_t blockSize = dataSize + 4; // SOH, number, 255 - number, data, checksum

/// The number that a block, counted from 1, carries.
unsigned char numberOf(std::size_t block, bool standardNumbers);
/// The sum of the bytes modulo 256.
char checksum(const std::string& data);
/// A block of that number; data shorter than 128 bytes is filled with `padding`.
std::string block(unsigned char number, std::string data, char padding);
} // namespace xmodem
} // namespace cncsim
