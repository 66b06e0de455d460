// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace EditorAccessibility
{
/// Gives program editors an accessibility interface of our own. The library's counts all characters before the caret
/// at each paint, which delays the line in a long program. Further calls do nothing.
void install();
} // namespace EditorAccessibility
