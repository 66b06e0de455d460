// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFileDialog>

namespace FileDialogs
{
/// A file dialog over `parent` that starts in the machine's program folder, a plain path or a URL. Open it with open(),
/// or with exec() only where nothing can replace the machine's view meanwhile: the dialog is destroyed with its view.
/// It deletes itself when closed.
QFileDialog* make(QWidget* parent, const QString& title, const QString& folder);
/// The same for saving, with `name` proposed: the operator types over it.
QFileDialog* makeSave(QWidget* parent, const QString& title, const QString& folder, const QString& name);
/// The file that was chosen in a dialog that has been accepted.
QString chosenFile(const QFileDialog& dialog);
} // namespace FileDialogs
