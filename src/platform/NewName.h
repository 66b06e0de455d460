// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Files that get a name which nothing else has.
namespace NewName
{
/// Gives the file in that open folder another name, in one step, as rename() does, but never in the place of something
/// that has the name already. Returns 0 or the system's error: EEXIST if the name is taken. Any thread.
int give(int folder, const char* from, const char* to);
} // namespace NewName
