// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class viewTX;

/// The one place that asks before another program takes the place of one that is not saved, whichever way it comes into
/// the transfer view. Main thread only.
namespace Replacing
{
/// Opens the program file in the view. Asks first if the text there is nowhere else, and saves it if the operator wants
/// that; a save that fails or is cancelled keeps the text. What can't be read changes nothing.
void openFile(viewTX& view, const QString& path);
} // namespace Replacing
