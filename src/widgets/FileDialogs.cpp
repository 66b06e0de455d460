// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/FileDialogs.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QScreen>
#include <QTreeView>
#include <QUrl>

QFileDialog* FileDialogs::make(QWidget* parent, const QString& title, const QString& folder)
{
    const QUrl url(folder);
    auto* dialog = new QFileDialog(parent, title, url.isLocalFile() ? url.toLocalFile() : folder);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // At its usual size Qt's own dialog cuts off names, sizes and dates. A desktop's native dialog sizes itself.
    dialog->resize(QSize(880, 560).boundedTo(parent->screen()->availableSize() * 0.9));
    if (auto* files = dialog->findChild<QTreeView*>(QStringLiteral("treeView")))
        files->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    // It would select the typed file in the folder shown, or cut the typed path down to a name.
    if (auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) edit->setCompleter(nullptr);
    return dialog;
}

QFileDialog* FileDialogs::makeSave(QWidget* parent, const QString& title, const QString& folder, const QString& name)
{
    auto* dialog = make(parent, title, folder);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setLabelText(QFileDialog::LookIn, QStringLiteral("Save in:"));
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Save File"));
    dialog->selectFile(name);
    if (auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) edit->selectAll();
    return dialog;
}

// Where a file of the typed name is in the folder shown, too, Qt takes both for chosen. What stands in the field
// counts.
QString FileDialogs::chosenFile(const QFileDialog& dialog)
{
    const auto files = dialog.selectedFiles();
    const auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    const QString typed = edit ? dialog.directory().absoluteFilePath(edit->text()) : QString();
    return files.contains(typed) ? typed : files.value(0);
}
