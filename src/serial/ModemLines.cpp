// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/ModemLines.h"

#include <sys/ioctl.h>
#include <termios.h>

ModemLines ModemLines::of(int bits)
{
    const auto has = [bits](int bit) { return (bits & bit) != 0; };
    return {has(TIOCM_DTR), has(TIOCM_RTS), has(TIOCM_CTS), has(TIOCM_DSR), has(TIOCM_CD)};
}

std::optional<ModemLines> ModemLines::read(int descriptor)
{
    int bits = 0;
    if (::ioctl(descriptor, TIOCMGET, &bits) != 0) return {};
    return of(bits);
}

void ModemLines::raise(int descriptor, bool withRts)
{
    const int bits = TIOCM_DTR | (withRts ? TIOCM_RTS : 0);
    ::ioctl(descriptor, TIOCMBIS, &bits); // without such lines there is nothing to raise
}
