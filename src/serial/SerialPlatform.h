// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <termios.h>

/// Where the terminal interfaces of the platforms differ; one source file each.
namespace SerialPlatform
{
/// Whether stripping bit 7 in the line discipline hides a parity-marked stop character from it.
bool stripHidesMarkedStop();

/// Input translations that this platform has beyond those of POSIX.
tcflag_t extraInputTranslations();

/// Asks an adapter to pass on at once what arrives, if it can: one that saves up for 16 ms brings a stop that late.
void askForLowLatency(int descriptor);
} // namespace SerialPlatform
