// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopNotice.h"

// The icon in the Dock asks for attention instead: see QApplication::alert.
void DesktopNotice::show(const QString&, const QString&) {}
