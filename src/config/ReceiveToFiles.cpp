// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/ReceiveToFiles.h"

#include "config/MachineRecord.h"
#include "config/MachineSections.h"

#include <QUrl>

namespace
{
const QString onKey = QStringLiteral("on=");
const QString folderKey = QStringLiteral("folder=");
const QString suffixKey = QStringLiteral("suffix=");
const QString silenceKey = QStringLiteral("silence=");
const QString copiesKey = QStringLiteral("copies=");

// A number that stands behind the key and is in range, or the one before.
void readNumber(const QString& line, const QString& key, int most, int& number)
{
    if (!line.startsWith(key)) return;
    bool isNumber = false;
    const int read = line.mid(key.size()).toInt(&isNumber);
    if (isNumber && read >= 1 && read <= most) number = read;
}

QStringList linesOf(const MachineRecord& machine)
{
    const ReceiveToFiles& files = machine.toFiles;
    if (files == ReceiveToFiles()) return {};
    QStringList lines = {onKey + (files.isOn ? QStringLiteral("true") : QStringLiteral("false")),
                         suffixKey + files.suffix, silenceKey + QString::number(files.silence),
                         copiesKey + QString::number(files.copies)};
    if (!files.folder.isEmpty() && !files.folder.contains(u'\n')) lines << folderKey + files.folder;
    return lines;
}

void readChoice(MachineRecord& machine, const QString& line)
{
    ReceiveToFiles& files = machine.toFiles;
    if (line.startsWith(onKey)) files.isOn = line == onKey + QStringLiteral("true");
    if (line.startsWith(folderKey)) files.folder = line.mid(folderKey.size());
    if (line.startsWith(suffixKey)) files.suffix = line.mid(suffixKey.size());
    readNumber(line, silenceKey, 3600, files.silence);
    readNumber(line, copiesKey, 999, files.copies);
}
} // namespace

QString ReceiveToFiles::folderOf(const MachineRecord& machine)
{
    if (!machine.toFiles.folder.isEmpty()) return machine.toFiles.folder;
    const QUrl url(machine.MCOUTDIR);
    return url.isLocalFile() ? url.toLocalFile() : machine.MCOUTDIR;
}

QString ReceiveToFiles::write(const std::vector<const MachineRecord*>& machines)
{
    return MachineSections::write(machines, linesOf);
}

void ReceiveToFiles::read(const QString& text, const std::vector<MachineRecord*>& machines)
{
    MachineSections::read(text, machines, readChoice);
}
