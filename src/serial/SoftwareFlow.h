// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <chrono>
#include <optional>

/// What a control says with XON and XOFF. Touches neither port nor clock: the bytes that arrive come in, and what is
/// left of them for the program goes out. Both characters count with and without a parity bit.
///
/// Many drivers of USB adapters never pass XOFF on to the chip, so the line discipline can't be left to obey it.
class SoftwareFlow
{
public:
    using Time = std::chrono::steady_clock::time_point;

    enum class Mode {
        Off,   ///< the characters have no meaning; all bytes are the program's
        Watch, ///< they hold and release, and the program gets them as well: XON may be its start signal
        Obey,  ///< they hold and release, and are taken out
    };

    /// A hold outlasts a change between Watch and Obey: a control that has stopped one send may not be ready for the
    /// next. Off ends it.
    void setMode(Mode mode);
    /// Takes what has arrived and returns what of it the program gets.
    QByteArray take(const QByteArray& arrived, Time now);
    /// The operator has decided that the control's XON was lost.
    void release() { heldSince_.reset(); }

    bool isHeld() const { return heldSince_.has_value(); }
    /// When the control stopped the line; nothing while it may be written to.
    std::optional<Time> heldSince() const { return heldSince_; }

private:
    Mode mode_ = Mode::Off;
    std::optional<Time> heldSince_;
};
