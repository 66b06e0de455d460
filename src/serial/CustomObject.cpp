// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/CustomObject.h"

#include <sys/ioctl.h>
#include <termios.h>

int CustomObject::bytesInTxBuffer(int descriptor)
{
    int pending = 0;
    return ::ioctl(descriptor, TIOCOUTQ, &pending) == 0 ? pending : 0;
}

int CustomObject::ioctl_XOff(int descriptor)
{
    return ::tcflow(descriptor, TCOOFF);
}
