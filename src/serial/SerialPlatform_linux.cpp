// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/SerialPlatform.h"

#include <linux/serial.h>
#include <sys/ioctl.h>

// Linux strips bit 7 before it looks for its stop character, 0x93 on a marked line.
bool SerialPlatform::stripHidesMarkedStop()
{
    return true;
}

tcflag_t SerialPlatform::extraInputTranslations()
{
    return IUCLC;
}

// Most drivers know no such setting, and then there is nothing to ask for.
void SerialPlatform::askForLowLatency(int descriptor)
{
    serial_struct port{};
    if (::ioctl(descriptor, TIOCGSERIAL, &port) != 0 || (port.flags & ASYNC_LOW_LATENCY) != 0) return;
    port.flags |= ASYNC_LOW_LATENCY;
    ::ioctl(descriptor, TIOCSSERIAL, &port);
}
