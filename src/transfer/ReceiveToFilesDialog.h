// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"

#include <QDialog>

#include <memory>

class QFileDialog;
namespace Ui
{
class ReceiveToFilesDialog;
}

/// How a machine's receive view saves by itself what comes. Changes nothing; deletes itself when closed. Main thread.
class ReceiveToFilesDialog : public QDialog
{
    Q_OBJECT
public:
    ReceiveToFilesDialog(const MachineRecord& machine, QWidget* parent);
    ~ReceiveToFilesDialog() override;

    ReceiveToFiles chosen() const;

    /// Asks for the folder. Deletes itself when closed.
    static QFileDialog* folderDialog(QWidget* parent, const QString& folder);

private:
    void browse();

    std::unique_ptr<Ui::ReceiveToFilesDialog> ui;
    const ReceiveToFiles before_;
};
