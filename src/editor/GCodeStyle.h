// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

/// What a piece of an NC program is; decides its colour. The values are the editor's style numbers.
enum class GCodeStyle : char {
    Plain,
    Command,       ///< G and M words
    Axis,          ///< X Y Z, A B C, U V W, I J K, R
    Cutting,       ///< F, S and T words and the offsets D and H
    BlockNumber,   ///< N words
    ProgramNumber, ///< O words, and ":" at the start of a block
    Percent,       ///< a line that starts with "%"
    Comment,       ///< "( )" and ";" to the end of the line
    Macro,         ///< "#100", IF, GOTO, WHILE, functions and comparisons
    Hidden,        ///< the rest of a line that is too long to show
};

namespace GCode
{
constexpr int styleCount = static_cast<int>(GCodeStyle::Hidden) + 1;

/// Writes the style of each byte of the line into `styles`, which has room for all of them. No comment or word
/// extends beyond its line, so lines can be coloured in any order.
void styleLine(std::string_view line, char* styles);
} // namespace GCode
