// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/FileDialogs.h"

#include <QUrl>

QFileDialog* FileDialogs::make(QWidget* parent, const QString& title, const QString& folder)
{
    const QUrl url(folder);
    auto* dialog = new QFileDialog(parent, title, url.isLocalFile() ? url.toLocalFile() : folder);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    return dialog;
}
