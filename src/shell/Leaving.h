// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

class viewChild;

/// The one place that asks before machines' views end, however the operator leaves them. Main thread only.
namespace Leaving
{
/// Whether all these views may end. Asks once if something would be lost, and saves it if the operator wants that; a
/// save that fails or is cancelled keeps the views.
bool isAllowed(const QList<viewChild*>& views);
} // namespace Leaving
