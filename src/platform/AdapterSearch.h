// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DeviceNames.h"

/// Finds the adapter of a port again after it was unplugged, and tells it from any other. Any thread.
class AdapterSearch
{
public:
    /// The adapter that has this path now is the one to find.
    void remember(const QString& path, const DeviceNames& names);
    /// It has just been lost: what is there now and looks the same is another one.
    void noteLoss(const DeviceNames& names);
    /// The path that it had.
    const QString& path() const { return path_; }

    struct Found {
        enum class Kind {
            Missing,   ///< it is not there
            Back,      ///< at its path
            Alike,     ///< at its path is one of the same kind; without serial numbers nobody can tell
            Elsewhere, ///< it has another path now
            Other,     ///< at its path is another one
        };
        Kind kind = Kind::Missing;
        QString path;             ///< to be opened; if nothing is there, the old one
        SerialDevice device = {}; ///< what is there
        bool operator==(const Found& other) const
        {
            return kind == other.kind && path == other.path && device.path == other.device.path;
        }
    };
    Found find(const DeviceNames& names) const;

private:
    enum class Match { Same, Alike, Other, Unknown };
    Match match(const SerialDevice& device, const QString& lasting) const;
    std::optional<Found> findElsewhere(const DeviceNames& names) const;

    QString path_;
    SerialDevice device_;
    QString lasting_;
    QStringList twins_; // bare names
};
