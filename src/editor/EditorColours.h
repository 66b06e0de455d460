// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/GCodeStyle.h"

#include <QColor>
#include <QPalette>

#include <array>

/// The editor's colours, made from a palette, light or dark. Text is readable on the paper, in a selection, in a match,
/// on the line going out and on one that was added: its contrast to each is at least `readableContrast`.
struct EditorColours {
    static constexpr double readableContrast = 4.5; // WCAG 2.1, level AA

    explicit EditorColours(const QPalette& palette);

    QColor paper;
    QColor ink;
    QColor accent;
    QColor selection;
    QColor lineOut;
    QColor caretLine;
    QColor match;
    QColor added; ///< lines that only one of two programs has
    QColor alarm; ///< background of a field with a wrong entry
    QColor margin;
    QColor lineNumber;
    std::array<QColor, GCode::styleCount> text; ///< by GCodeStyle

    /// Contrast of two colours as WCAG defines it, 1 to 21.
    static double contrast(const QColor& one, const QColor& other);
};
