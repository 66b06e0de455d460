// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/SoftwareFlow.h"

namespace
{
// DC1 and DC3 of ISO 646.
constexpr char xon = 0x11;
constexpr char xoff = 0x13;
} // namespace

void SoftwareFlow::setMode(Mode mode)
{
    mode_ = mode;
    if (mode == Mode::Off) release();
}

QByteArray SoftwareFlow::take(const QByteArray& arrived, Time now)
{
    if (mode_ == Mode::Off) return arrived;
    QByteArray rest;
    rest.reserve(arrived.size());
    for (const char byte : arrived) {
        const char character = static_cast<char>(byte & 0x7F); // without parity
        const bool isFlow = character == xon || character == xoff;
        if (character == xoff && !heldSince_) heldSince_ = now;
        if (character == xon) heldSince_.reset();
        if (!isFlow || mode_ == Mode::Watch) rest += byte;
    }
    return rest;
}
