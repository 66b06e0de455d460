// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>

/// The modem lines of a serial port at one moment, as the system reports them. A plain value.
struct ModemLines {
    bool dtr = false, rts = false, cts = false, dsr = false, dcd = false;

    /// From the bits of the system's request.
    static ModemLines of(int bits);
    /// Asks the driver, which may have to ask its adapter: not on the main thread. Nothing for a device without such
    /// lines, as a pseudo-terminal is.
    static std::optional<ModemLines> read(int descriptor);
    /// Says to the control that we are here: DTR and, unless flow control drives it, RTS are on from now on.
    static void raise(int descriptor, bool withRts);

    bool operator==(const ModemLines&) const = default;
};

/// One of them, for those who show it.
struct ModemLine {
    const char* name;
    bool ModemLines::*isOn;
    const char* meaning; ///< what it says while it is on
};
inline constexpr std::array modemLines{
    ModemLine{"DTR", &ModemLines::dtr, "this computer is ready"},
    ModemLine{"RTS", &ModemLines::rts, "this computer is ready to receive"},
    ModemLine{"CTS", &ModemLines::cts, "the control is ready to receive"},
    ModemLine{"DSR", &ModemLines::dsr, "the control is switched on"},
    ModemLine{"DCD", &ModemLines::dcd, "the control reports a connection"},
};
