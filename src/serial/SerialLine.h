// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serial/Descriptor.h"
#include "serial/PortError.h"

#include <QString>

#include <memory>
#include <variant>

struct termios;

/// The one place that handles termios: opens a serial device for us alone and sets its line up.
namespace SerialLine
{
struct Settings {
    unsigned long speed = 0; ///< baud
    int stopBits = 1;
    int flowType = 0; ///< 0 none, 1 XON/XOFF, 2 RTS/CTS, 3 raw 8 bits
    bool evenParity = false;
};

/// The device, or why it did not open. Waits a moment if this program is still closing it.
std::variant<std::shared_ptr<Descriptor>, PortFailure> openExclusive(const QString& path);

/// Sets all that Settings names unless it is so already, and reads it back: drivers also report success for what their
/// adapter cannot do. PortError::None on success.
PortFailure setUp(int descriptor, const Settings& settings);

/// Which of speed, stop bits and RTS/CTS the driver did not set as asked: the first, or None.
PortError notTaken(const termios& asked, const termios& taken);

/// Changes the flow control alone, and reads it back as setUp does.
PortFailure setFlow(int descriptor, int flow);

/// Whether the system knows that speed, in baud. An adapter may still not do it.
bool hasSpeed(unsigned long baud);

/// Whether whoever reads has to clear bit 7 of received bytes because the line cannot be told to.
bool readerStripsParity(bool evenParity);
} // namespace SerialLine
