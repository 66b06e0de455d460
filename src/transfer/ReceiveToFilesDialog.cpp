// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ReceiveToFilesDialog.h"
#include "ui_ReceiveToFilesDialog.h"

#include "widgets/FileDialogs.h"

#include <QDir>

ReceiveToFilesDialog::ReceiveToFilesDialog(const MachineRecord& machine, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::ReceiveToFilesDialog>()), before_(machine.toFiles)
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    MachineRecord without;
    without.MCOUTDIR = machine.MCOUTDIR;
    const QString usual = ReceiveToFiles::folderOf(without);
    if (!usual.isEmpty()) ui->txtSaveFolder->setPlaceholderText(QDir::toNativeSeparators(usual));
    ui->txtSaveFolder->setText(before_.folder);
    ui->txtSaveSuffix->setText(before_.suffix);
    ui->spnSilence->setValue(before_.silence);
    ui->spnCopies->setValue(before_.copies);
    connect(ui->btnSaveFolder, &QPushButton::clicked, this, &ReceiveToFilesDialog::browse);
    connect(ui->buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

ReceiveToFilesDialog::~ReceiveToFilesDialog() = default;

ReceiveToFiles ReceiveToFilesDialog::chosen() const
{
    ReceiveToFiles files = before_;
    files.folder = ui->txtSaveFolder->text();
    files.suffix = ui->txtSaveSuffix->text();
    files.silence = ui->spnSilence->value();
    files.copies = ui->spnCopies->value();
    return files;
}

QFileDialog* ReceiveToFilesDialog::folderDialog(QWidget* parent, const QString& folder)
{
    auto* dialog = FileDialogs::make(parent, QStringLiteral("Folder for what comes"), folder);
    dialog->setObjectName(QStringLiteral("folderDialog"));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Choose"));
    return dialog;
}

void ReceiveToFilesDialog::browse()
{
    const QString shown = ui->txtSaveFolder->text();
    auto* dialog = folderDialog(this, shown.isEmpty() ? ui->txtSaveFolder->placeholderText() : shown);
    connect(dialog, &QFileDialog::fileSelected, ui->txtSaveFolder, &QLineEdit::setText);
    dialog->open();
}
