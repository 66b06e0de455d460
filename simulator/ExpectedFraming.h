// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace cncsim
{
/// How the control expects a program to be framed.
enum class ControlKind { Plain, Fanuc, Okuma };

struct ExpectedFraming {
    ControlKind type = ControlKind::Plain;
    std::string eob = "\r\n"; ///< end of block
    std::string sot = {};     ///< start and end strings of a plain control
    std::string eot = {};
};
} // namespace cncsim
