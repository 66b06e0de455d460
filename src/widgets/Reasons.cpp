// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/Reasons.h"

#include <QVariant>
#include <QWidget>

void Reasons::enable(QWidget& control, bool isEnabled, const QString& reason)
{
    static const char usualTip[] = "usualToolTip";
    if (!control.property(usualTip).isValid()) control.setProperty(usualTip, control.toolTip());
    control.setEnabled(isEnabled);
    control.setToolTip(isEnabled ? control.property(usualTip).toString() : reason);
}
