// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFileDialog>

namespace FileDialogs
{
/// A file dialog over `parent` that starts in the machine's program folder, a plain path or a URL. Open it with open(),
/// not exec(): it must be destroyed with its view when the machine's view is replaced. It deletes itself when closed.
QFileDialog* make(QWidget* parent, const QString& title, const QString& folder);
} // namespace FileDialogs
