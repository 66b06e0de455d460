// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class MachineChoice;
}

/// Asks which machine a program is for.
class MachineChoice : public QDialog
{
    Q_OBJECT
public:
    /// Proposes the machine that had the program last or, without one, the machine at the index `active`.
    MachineChoice(const QString& program, int active, QWidget* parent);
    ~MachineChoice() override;

    /// Index of the machine chosen.
    int machine() const;

private:
    std::unique_ptr<Ui::MachineChoice> ui;
};
