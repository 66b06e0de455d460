// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QWidget;

namespace Reasons
{
/// Enables or disables a control. Disabled, its tool tip is the reason, or what to do; enabled, it is the one that its
/// form gives it.
void enable(QWidget& control, bool isEnabled, const QString& reason);
} // namespace Reasons
