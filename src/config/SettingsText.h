// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

/// The text form in which the machine list is stored. Writer and reader are not symmetric, and users' stored settings
/// depend on that: some keys are written but never read, and the reader falls back to presets of its own.
namespace SettingsText
{
/// The text for these machines, in order. The placeholder is not among them.
QString write(const std::vector<const MachineRecord*>& machines);

/// Every record that the text holds, made by `make` and numbered in MCINDEX, the placeholder first. Any text is
/// accepted: unknown lines are ignored and bad values fall back to the preset of their key.
std::vector<std::shared_ptr<MachineRecord>> read(const QString& text,
                                                 const std::function<std::shared_ptr<MachineRecord>()>& make);
} // namespace SettingsText
