// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace EditorAccessibility
{
/// Makes assistive technology see program editors through an interface of ours. The library's own counts all
/// characters before the caret at each paint, which holds up the line in a long program. Once is enough.
void install();
} // namespace EditorAccessibility
