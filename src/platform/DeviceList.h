// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <optional>

namespace DeviceList
{
/// The paths of the serial devices present, in the platform's order; nothing when the platform cannot be asked.
/// On macOS only the callout devices, which open without waiting for a carrier.
std::optional<QStringList> serialDevices();

/// Maker, product and serial number of the adapter at that path; empty when the platform knows none.
QString description(const QString& path);
} // namespace DeviceList
