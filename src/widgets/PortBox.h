// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>

/// The choice of a serial port: paths, and in the list below each what is known of its adapter. Signals when its list
/// is about to be shown, so that newly plugged-in adapters can be added.
class PortBox : public QComboBox
{
    Q_OBJECT
public:
    explicit PortBox(QWidget* parent = nullptr);

    /// Adds a path; the box never shows or returns anything else. The description may be empty.
    void addPort(const QString& path, const QString& description);
    void showPopup() override;

Q_SIGNALS:
    void aboutToShowList();
};
