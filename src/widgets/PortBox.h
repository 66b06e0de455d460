// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>

/// The choice of a serial port. Signals when its list is about to be shown, so that newly plugged-in adapters can be
/// added.
class PortBox : public QComboBox
{
    Q_OBJECT
public:
    using QComboBox::QComboBox;

    void showPopup() override
    {
        Q_EMIT aboutToShowList();
        QComboBox::showPopup();
    }

Q_SIGNALS:
    void aboutToShowList();
};
