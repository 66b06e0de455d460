// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/SerialPlatform.h"

// Linux strips bit 7 before it looks for the stop character, so a marked XOFF would pass unseen.
bool SerialPlatform::stripHidesMarkedStop()
{
    return true;
}

tcflag_t SerialPlatform::extraInputTranslations()
{
    return IUCLC;
}
