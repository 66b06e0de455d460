// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>

/// The choice of a serial port. It tells when its list is about to be seen, so that adapters plugged in since are in
/// it.
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
