// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What single characters of a program are. By byte, not by locale: only ASCII has a meaning to a control.
namespace Characters
{
inline bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

inline bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Blanks, and the control characters of a tape: they are no part of any word.
inline bool isBlank(char c)
{
    return (c >= 0 && c <= ' ') || c == 127;
}

inline char upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
} // namespace Characters
