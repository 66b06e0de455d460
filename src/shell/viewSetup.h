// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"
#include "platform/DeviceNames.h"
#include "platform/NotificationCenter.h"
#include "serial/serialPort.h"

#include <QStringList>
#include <QWidget>

#include <memory>

namespace Ui
{
class viewSetup;
}

/// The form in which one machine's record is edited. What is typed is stored as typed; the form says what will not
/// work.
class viewSetup : public QWidget
{
    Q_OBJECT
public:
    /// `devices`: where the names of the ports present come from.
    explicit viewSetup(QWidget* parent = nullptr, DeviceSources devices = {});
    ~viewSetup() override;

    /// Shows the machine at that index. Meant to be called once.
    void initialize(int mcIndex);

    void populateModeCombo();
    void populatePortsCombo();
    void selectCurrentValues();
    void btnTXBrowse();
    void btnSave_Click();
    /// Puts the lasting name of the port's adapter in the place of its bare one.
    void btnLastingName_Click();
    /// Shows the stored values again.
    void btnRevert_Click();
    /// The form shows something else than is stored.
    bool isChanged() const { return shownValues() != storedValues_; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void offerStoredSpeed();
    void alignLabels();
    void fitHeight();
    void setSpace(bool isTight);
    // --- As the operator types (viewSetup_live.cpp) ------------------------------------------------------------------
    void watchFields();
    void refreshPorts();
    void showLive();
    void showLine();
    void showSpeed();
    void showPort();
    void showFraming();
    QStringList shownValues() const;

    NotificationCenter* nc = &NotificationCenter::defaultCenter();
    std::shared_ptr<MachineRecord> mc;
    const DeviceSources devices_;
    serialPort sp; // asked for the devices present, never opened
    std::unique_ptr<Ui::viewSetup> ui;
    QString lastingName_;      // of the port's adapter, where the port has its bare one
    QStringList storedValues_; // what the fields showed when they agreed with the record
};
