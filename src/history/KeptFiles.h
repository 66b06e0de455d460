// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// Files that are written without anybody looking on, and with older ones of the same name kept beside them:
/// "O1234.nc.~1~", "O1234.nc.~2~" and so on, the highest number being the newest. A file is whole or not there, and at
/// every moment the old one is there or the new one, or both.
namespace KeptFiles
{
struct Order {
    QString folder;
    QString name; ///< in the folder; a path is refused
    QByteArray bytes;
    int copies = 20; ///< older ones that are kept, at least 1; the oldest go
};

struct Result {
    enum class Outcome { Saved, Same, Failed };
    Outcome outcome = Outcome::Saved;
    QString path;
    qint64 kept = 0; ///< the number of the older copy; 0 if there was no file, or the same
    QString error;   ///< what went wrong, in the system's words
};

/// The path of that older copy.
QString keptPath(const QString& path, qint64 number);

/// Writes the file. One with the same content is left alone. What has the name and is no plain file stays, and the
/// order fails. May take as long as the folder's file system does, on a network a minute. Any thread.
Result save(const Order& order);
} // namespace KeptFiles
