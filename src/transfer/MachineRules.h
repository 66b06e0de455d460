// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"
#include "program/LineCheck.h"

namespace MachineRules
{
/// What a program has to keep to on this machine, as its settings say.
CheckRules check(const MachineRecord& machine);
} // namespace MachineRules
