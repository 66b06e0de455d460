// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

/// A pseudo-terminal has no baud rate and no pending output. The library paced_line stands between a program and the
/// system calls: every pseudo-terminal that the program opens afterwards behaves like a UART with a driver. Link it, or
/// preload it into a program that knows nothing of it.
///
/// The model: 4096 bytes of driver buffer, which TIOCOUTQ counts; a chip that accepts some bytes ahead of the line,
/// which it does not count and which a flush does not take back; the line's own speed and stop bits. Each byte reaches
/// the control when its stop bit is over. The driver obeys no XOFF. close() waits for the rest, as drivers do.
///
/// Any thread may call these functions.
namespace PacedLine
{
/// Processor time that the model itself has used, in seconds: subtract it from the program's.
double processorSeconds();

struct Chip {
    int fifo = 16;                             ///< bytes that it accepts ahead of the one on the line
    double slowness = 1;                       ///< 1.01 for a clock that is 1 % slow
    std::chrono::milliseconds arrivalDelay{0}; ///< until the program can read what has arrived
    bool hasRtsCts = true;                     ///< without it the driver reports success and leaves it off
};

/// Lines that are opened from now on have such a chip. What arrives is kept in the model, so poll() tells nothing of
/// it.
void use(const Chip& chip);

/// How often the bytes that the line has carried are passed on to the control. Late ones change nothing for the
/// program; with many lines the model would otherwise take the processor from it.
void passOnEvery(std::chrono::microseconds tick);

/// In bytes since the line was opened.
struct Count {
    long taken = 0;   ///< from the program
    long carried = 0; ///< to the control
};

struct Record {
    Count now;
    Count arrival;      ///< as it was when the last bytes from the control came to the chip
    Count seen;         ///< as it was when the program last read some
    long readBytes = 0; ///< that the program has read
    long reads = 0;     ///< how often it has asked for some
};

/// Of an open line for which a chip was chosen with use().
Record record(int descriptor);
} // namespace PacedLine
