// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>

/// A fuzz target is one file with this function, under the name that libFuzzer calls. It aborts when the code under
/// test breaks a promise.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// What holds for every input.
#define PROMISE(condition)                                                                                             \
    do {                                                                                                               \
        if (!(condition)) qFatal("broken promise: %s", #condition);                                                    \
    } while (false)

namespace Fuzz
{
inline QByteArray bytes(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)};
}

/// Takes one byte from the front, for choices; 0 when there is none.
inline int takeChoice(QByteArray& input)
{
    const int choice = input.isEmpty() ? 0 : static_cast<unsigned char>(input.front());
    input.remove(0, 1);
    return choice;
}
} // namespace Fuzz
