// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/g.h"
#include "platform/DeviceNames.h"

/// What the setup form says of a port and its names.
namespace PortWords
{
/// The adapter of that path; with a lasting name also the bare one that it has now. Empty where nothing is known.
QString adapter(const QString& path, const DeviceNames& names);
/// Which other machine means the same device by another name; empty if none does.
QString sharedWith(const QString& path, const MachineRecord& machine, const g::McIcons& machines);
} // namespace PortWords
