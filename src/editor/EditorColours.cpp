// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/EditorColours.h"

#include <QList>

#include <algorithm>
#include <cmath>

namespace
{
struct Hue {
    GCodeStyle style;
    float hue; // on the colour wheel, 0 to 1
    float saturation;
};
constexpr std::array hues{
    Hue{GCodeStyle::Command, 0.60F, 0.90F},                                               // blue
    Hue{GCodeStyle::Axis, 0.48F, 0.85F},                                                  // teal
    Hue{GCodeStyle::Cutting, 0.07F, 0.90F},                                               // orange
    Hue{GCodeStyle::BlockNumber, 0.60F, 0.08F},                                           // grey
    Hue{GCodeStyle::ProgramNumber, 0.78F, 0.65F},                                         // violet
    Hue{GCodeStyle::Percent, 0.78F, 0.65F},       Hue{GCodeStyle::Comment, 0.31F, 0.55F}, // green
    Hue{GCodeStyle::Macro, 0.94F, 0.75F},                                                 // crimson
};

double luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

// A colour between two others: 0 gives the first, 1 the second.
QColor between(const QColor& from, const QColor& to, double share)
{
    const auto mix = [share](int a, int b) { return static_cast<int>(a + (b - a) * share); };
    return {mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue())};
}

bool canBeRead(const QColor& colour, const QList<QColor>& grounds)
{
    return std::all_of(grounds.begin(), grounds.end(), [&](const QColor& ground) {
        return EditorColours::contrast(colour, ground) >= EditorColours::readableContrast;
    });
}

// The colour, moved towards black or white until it is readable on all of the grounds.
QColor readable(const QColor& colour, const QList<QColor>& grounds)
{
    constexpr int steps = 50;
    const QColor end = luminance(grounds.first()) > 0.18 ? Qt::black : Qt::white; // either is readable on such a paper
    for (int step = 0; step < steps; ++step) {
        const QColor tried = between(colour, end, static_cast<double>(step) / steps);
        if (canBeRead(tried, grounds)) return tried;
    }
    return end;
}

// The paper with as much of the accent as leaves black or white text readable.
QColor tint(const QColor& paper, const QColor& accent, double share)
{
    const QColor end = luminance(paper) > 0.18 ? Qt::black : Qt::white;
    while (share > 0.01 && !canBeRead(end, {between(paper, accent, share)}))
        share /= 2;
    return between(paper, accent, share);
}
} // namespace

double EditorColours::contrast(const QColor& one, const QColor& other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

EditorColours::EditorColours(const QPalette& palette)
    : paper(palette.color(QPalette::Base)), accent(palette.color(QPalette::Highlight)),
      selection(tint(paper, accent, 0.35)), lineOut(tint(paper, accent, 0.25)), caretLine(tint(paper, accent, 0.1)),
      match(tint(paper, QColor(255, 180, 0), luminance(paper) > 0.18 ? 0.35 : 0.2)),
      added(tint(paper, QColor(60, 180, 75), 0.3)), alarm(tint(paper, QColor(220, 40, 40), 0.3))
{
    const QList<QColor> grounds{paper, selection, lineOut, caretLine, match, added};
    ink = readable(palette.color(QPalette::Text), grounds);
    margin = between(paper, ink, 0.06);
    lineNumber = readable(between(margin, ink, 0.55), {margin});
    text.fill(ink);
    const float lightness = luminance(paper) > 0.18 ? 0.40F : 0.65F;
    for (const auto& [style, hue, saturation] : hues)
        text[static_cast<std::size_t>(style)] = readable(QColor::fromHslF(hue, saturation, lightness), grounds);
}
