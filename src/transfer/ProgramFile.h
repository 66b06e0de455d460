// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// A program on disk: read as a whole, written as a whole or not at all.
namespace ProgramFile
{
/// Only a regular file: a pipe or a device has no end that a read could come to.
bool isReadable(const QString& path);
/// Tells the operator that it is not.
QString unreadable(const QString& path);
/// More bytes than the editor can hold.
bool isTooLarge(const QString& path);
/// All bytes of the file; nothing when a part of it can't be read.
std::optional<QByteArray> read(const QString& path);
/// Replaces the file, or leaves it as it is. Returns what went wrong in the system's words, empty on success.
QString write(const QString& path, const QByteArray& bytes);
} // namespace ProgramFile
