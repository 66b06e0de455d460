// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

#include <optional>

/// A serial device that is present, and what the system knows of its adapter: empty where it knows nothing.
struct SerialDevice {
    QString path; ///< the bare name, which the system gave it when it came
    QString maker = {}, product = {}, serial = {};

    bool isKnown() const { return !inWords().isEmpty(); }
    bool isSameKind(const SerialDevice& other) const { return maker == other.maker && product == other.product; }
    /// Maker, product and serial number.
    QString inWords() const;
};

namespace DeviceList
{
/// The serial devices present, in the platform's order; nothing when the platform cannot be asked. On macOS only the
/// callout devices, which open without waiting for a carrier.
std::optional<QList<SerialDevice>> present();
} // namespace DeviceList
