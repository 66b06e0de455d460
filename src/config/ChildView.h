// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What the machine list holds beside each record: the container of that machine's working view.
/// The shell's view derives from it; here it is only stored.
struct ChildView {
    ChildView() = default;
    virtual ~ChildView() = default;
    ChildView(const ChildView&) = delete;
    ChildView& operator=(const ChildView&) = delete;
};
