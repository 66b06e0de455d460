// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/CurrentFile.h"

#include "platform/Preferences.h"
#include "program/ProgramName.h"
#include "widgets/FileDialogs.h"

#include <QDateTime>
#include <QFileInfo>
#include <QUrl>

namespace
{
// By name, because positions change. Beside the settings text, which stays as shops know it.
QString folderKey(const MachineRecord& machine)
{
    return QStringLiteral("LastFolder/") + QString::fromLatin1(QUrl::toPercentEncoding(machine.MCNAME));
}

QString startFolder(const MachineRecord& machine)
{
    if (!machine.MCOUTDIR.isEmpty()) return machine.MCOUTDIR;
    return Preferences::string(folderKey(machine)).value_or(QString());
}
} // namespace

QString CurrentFile::name() const
{
    return QFileInfo(path_).fileName();
}

void CurrentFile::opened(const MachineRecord& machine, const QString& path)
{
    use(machine, path);
    wasSaved_ = false;
}

void CurrentFile::saved(const MachineRecord& machine, const QString& path)
{
    use(machine, path);
    wasSaved_ = true;
}

void CurrentFile::use(const MachineRecord& machine, const QString& path)
{
    path_ = path;
    const QString key = folderKey(machine);
    const QString folder = QFileInfo(path).absolutePath();
    if (Preferences::string(key) != folder) Preferences::setString(key, folder);
}

void CurrentFile::forget()
{
    path_.clear();
    wasSaved_ = false;
}

QString CurrentFile::note(bool isUnsaved) const
{
    if (isUnsaved) return QStringLiteral("Not saved");
    return wasSaved_ ? QStringLiteral("Saved") : QString();
}

QFileDialog* CurrentFile::openDialog(const MachineRecord& machine) const
{
    auto* dialog = FileDialogs::make(&view_, QStringLiteral("Open program"), startFolder(machine));
    dialog->setObjectName(QStringLiteral("openDialog"));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::ReadOnly);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("SelectFile"));
    return dialog;
}

QFileDialog* CurrentFile::compareDialog(const MachineRecord& machine) const
{
    auto* dialog = openDialog(machine);
    dialog->setObjectName(QStringLiteral("compareDialog"));
    dialog->setWindowTitle(QStringLiteral("Compare with file"));
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Compare"));
    return dialog;
}

QFileDialog* CurrentFile::saveDialog(const MachineRecord& machine, std::string_view text) const
{
    const QString proposed =
        path_.isEmpty() ? ProgramName::proposed(text, machine.MCNAME, QDateTime::currentDateTime()) : name();
    auto* dialog = FileDialogs::makeSave(&view_, QStringLiteral("Save program"), startFolder(machine), proposed);
    dialog->setObjectName(QStringLiteral("saveDialog"));
    return dialog;
}
