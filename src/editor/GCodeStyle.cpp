// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/GCodeStyle.h"

#include <algorithm>

namespace
{
// By byte, not by locale: the text is UTF-8 and only ASCII has a meaning to a control.
bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

GCodeStyle styleOfWord(char letter)
{
    switch (letter & ~0x20) { // upper case
    case 'G':
    case 'M':
        return GCodeStyle::Command;
    case 'F':
    case 'S':
    case 'T':
    case 'D':
    case 'H':
        return GCodeStyle::Cutting;
    case 'N':
        return GCodeStyle::BlockNumber;
    case 'O':
        return GCodeStyle::ProgramNumber;
    default:
        return std::string_view("XYZABCUVWIJKR").find(static_cast<char>(letter & ~0x20)) != std::string_view::npos
                   ? GCodeStyle::Axis
                   : GCodeStyle::Plain;
    }
}

// Goes through one line and hands out styles from left to right.
class LineStyler
{
public:
    LineStyler(std::string_view line, char* styles) : line_(line), styles_(styles) {}

    void run()
    {
        skip(isBlank);
        if (has('%')) return style(line_.size(), GCodeStyle::Percent);
        if (has(':')) number(GCodeStyle::ProgramNumber);
        while (at_ < line_.size())
            next();
    }

private:
    bool has(char c) const { return at_ < line_.size() && line_[at_] == c; }

    template <typename Is> std::size_t endOf(std::size_t from, Is is) const
    {
        return static_cast<std::size_t>(
            std::find_if_not(line_.begin() + static_cast<std::ptrdiff_t>(from), line_.end(), is) - line_.begin());
    }
    template <typename Is> void skip(Is is) { style(endOf(at_, is), GCodeStyle::Plain); }

    void style(std::size_t end, GCodeStyle style)
    {
        std::fill(styles_ + at_, styles_ + end, static_cast<char>(style));
        at_ = end;
    }

    // One character and the number that follows it.
    void number(GCodeStyle whole)
    {
        const auto end = endOf(at_ + 1, isBlank);
        const auto digits = endOf(end, [](char c) { return isDigit(c) || c == '.' || c == '+' || c == '-'; });
        style(digits > end ? digits : at_ + 1, whole);
    }

    void next()
    {
        const char c = line_[at_];
        if (c == '(') {
            const auto close = line_.find(')', at_);
            style(close == std::string_view::npos ? line_.size() : close + 1, GCodeStyle::Comment);
        } else if (c == ';') {
            style(line_.size(), GCodeStyle::Comment);
        } else if (c == '#') {
            number(GCodeStyle::Macro);
        } else if (isLetter(c)) {
            const auto end = endOf(at_, isLetter);
            if (end - at_ == 1) return number(styleOfWord(c));
            style(endOf(end, isDigit), GCodeStyle::Macro); // GOTO100, DO1, VC1
        } else {
            style(at_ + 1, GCodeStyle::Plain);
        }
    }

    std::string_view line_;
    char* styles_;
    std::size_t at_ = 0;
};
} // namespace

void GCode::styleLine(std::string_view line, char* styles)
{
    LineStyler(line, styles).run();
}
