// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// A pseudo-terminal has no baud rate and no pending output. The library paced_line stands between a program and the
/// system calls: every pseudo-terminal that the program opens afterwards behaves like a UART with a driver. Link it, or
/// preload it into a program that knows nothing of it.
///
/// The model: 4096 bytes of driver buffer, which TIOCOUTQ counts; a FIFO of 16 bytes, which it does not count and which
/// is refilled when it has run empty; the line's own speed and stop bits. While held by XOFF the driver does not refill
/// the FIFO, but what is in it still goes out. close() waits for the rest, as drivers do.
namespace PacedLine
{
constexpr int fifoSize = 16;

/// Processor time that the model itself has used, in seconds: subtract it from the program's.
double processorSeconds();
} // namespace PacedLine
