// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"
#include "transfer/MachineProgress.h"

#include <QWidget>

#include <memory>

class MachineButton;
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
    /// The part of the icon that takes clicks, keys and focus.
    MachineButton* button() const;
    /// Whether the Tab key stops at this icon; one icon in the panel has it, and arrow keys move on from there.
    void setTabStop(bool stops);
    bool isTabStop() const;

    void btnMC_Click();
    void btnDeleteIcon_click();

    double pBarMaximum() const override;
    void setPBarMaximum(double maximum) override;
    void setPBarValue(double value) override;
    void setPBarHidden(bool hidden) override;
    void showActivity(TransferActivity activity) override;
    TransferActivity activity() const { return activity_; }
    /// The activity in the icon's words.
    QString stateText() const;

Q_SIGNALS:
    void programDropped(const QString& path);

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showBar();
    void showState();
    void showImages(const QString& machine, const QString& state);
    void showDeleteButton();

    std::unique_ptr<Ui::viewMC> ui;
    double maximum_ = 0;
    double value_ = 0;
    TransferActivity activity_ = TransferActivity::Idle;
    QString machineImage_, stateImage_;
};
