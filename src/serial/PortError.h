// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Why a port did not open, or why its line could not be set up anew.
enum class PortError {
    None,
    Missing, ///< no such device, or its adapter is unplugged
    InUse,   ///< by another program, or by us
    Closing, ///< we are done with it, but its driver is slow to close it
    NoPermission,
    NotASerialPort,
    NoSuchSpeed,      ///< the system knows no such rate
    SettingsRefused,  ///< by the driver
    SpeedNotTaken,    ///< the driver reported success but set another speed
    StopBitsNotTaken, ///< the same for the stop bits
    RtsCtsNotTaken,   ///< the same for RTS/CTS, on or off
    Other             ///< anything else that the system reported
};

struct PortFailure {
    PortError error = PortError::None;
    QString systemText = {}; ///< the system's own words; empty where the error says it all
};
