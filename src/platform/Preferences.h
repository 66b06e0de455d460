// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

/// The application's stored values, one string per key, in the place where the platform keeps preferences.
namespace Preferences
{
/// The stored string, or nothing when there is none. A stored value that is no string reads as an empty text.
std::optional<QString> string(const QString& key);

/// Stores the string and flushes it to disk. The file is replaced as a whole: a reader sees the old or the new text.
void setString(const QString& key, const QString& text);

/// Call at the start of the only program that uses these values: drops the lock that a program killed in the middle of
/// a save has left. Saving would wait for it, on a full disk for ever.
void dropLeftoverLock();

/// The folder that holds the stored values; made when it is missing.
QString folder();
} // namespace Preferences
