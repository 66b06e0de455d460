// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/SerialPlatform.h"

bool SerialPlatform::stripHidesMarkedStop()
{
    return false;
}

tcflag_t SerialPlatform::extraInputTranslations()
{
    return 0;
}

// Nothing here that a program may set: the drivers keep it in their own configuration.
void SerialPlatform::askForLowLatency(int) {}
