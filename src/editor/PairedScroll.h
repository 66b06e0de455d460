// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/ProgramEditor.h"
#include "program/Comparison.h"

#include <array>
#include <memory>

/// Scrolls and zooms two editors together, so that lines which belong together stand side by side: exactly so a third
/// down the window. Both reach their ends together. Owned by the left editor.
class PairedScroll : public QObject
{
    Q_OBJECT
public:
    PairedScroll(ProgramEditor* left, ProgramEditor* right);

    /// Without a comparison, line by line.
    void follow(std::shared_ptr<const Comparison> comparison) { comparison_ = std::move(comparison); }
    /// Brings a difference into sight, its first lines side by side.
    void showDifference(const Comparison::Difference& difference);

private:
    void scrolled(Comparison::Side side);
    ProgramEditor* editor(Comparison::Side side) const { return side == Comparison::Side::Left ? left_ : right_; }

    ProgramEditor* left_;
    ProgramEditor* right_;
    std::shared_ptr<const Comparison> comparison_;
    bool isScrolling_ = false; // by this class
};
