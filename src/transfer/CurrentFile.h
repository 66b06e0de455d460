// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"

#include <QString>

#include <string_view>

class QFileDialog;
class QWidget;

/// Which file the program of a transfer view is, and the dialogs in which the operator chooses one. The view owns it.
/// Main thread only.
class CurrentFile
{
public:
    explicit CurrentFile(QWidget& view) : view_(view) {}

    /// Full path, empty while the program has no file.
    const QString& path() const { return path_; }
    QString name() const;

    void opened(const MachineRecord& machine, const QString& path);
    void saved(const MachineRecord& machine, const QString& path);
    void forget();

    /// Whether the program is saved, in a word or two; nothing where that goes without saying.
    QString note(bool isUnsaved) const;

    /// Dialogs that start in the machine's program folder; without one, in the folder used last for the machine, also
    /// before the last restart.
    QFileDialog* openDialog(const MachineRecord& machine) const;
    QFileDialog* compareDialog(const MachineRecord& machine) const;
    /// Proposes the file's own name; for a program without a file, one made from its text.
    QFileDialog* saveDialog(const MachineRecord& machine, std::string_view text) const;

private:
    void use(const MachineRecord& machine, const QString& path);

    QWidget& view_;
    QString path_;
    bool wasSaved_ = false; // by this view, not only opened
};
