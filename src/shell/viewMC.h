// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"
#include "transfer/MachineProgress.h"

#include <QWidget>

#include <memory>

namespace Ui
{
class viewMC;
}

/// A machine's icon in the panel, which also carries the machine's record. The machine list owns it. Main thread.
class viewMC : public QWidget, public MachineRecord, public MachineProgress
{
    Q_OBJECT
public:
    explicit viewMC(QWidget* parent = nullptr);
    ~viewMC() override;

    bool _isActive = false;
    void isActive(bool active);

    /// Shows the record's name and port.
    void refresh();

    void btnMC_Click();
    void btnDeleteIcon_click();

    double pBarMaximum() const override;
    void setPBarMaximum(double maximum) override;
    void setPBarValue(double value) override;
    void setPBarHidden(bool hidden) override;
    void showActivity(TransferActivity activity) override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void showState();

    std::unique_ptr<Ui::viewMC> ui;
    double maximum_ = 0;
    double value_ = 0;
    TransferActivity activity_ = TransferActivity::Idle;
};
