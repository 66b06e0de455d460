// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>
#include <cstdint>
#include <cstdio>
#include <string>

/// The program that is sent. The blocks are numbered, so that each one lost or doubled can be told.
namespace Program
{
constexpr int blocks = 541; // 20,017 characters

inline std::string block(int number)
{
    char text[64];
    std::snprintf(text, sizeof text, "N%04d G01 X%08.3f Y%08.3f F%04d\r\n", number, number * 1.5, number * -0.25,
                  number);
    return text;
}

inline std::string whole()
{
    std::string program;
    for (int number = 1; number <= blocks; ++number)
        program += block(number);
    return program;
}

/// As a control with 7 bits and even parity sends and expects it.
inline std::uint8_t marked(std::uint8_t character)
{
    return static_cast<std::uint8_t>(std::popcount(character) % 2 == 0 ? character : character | 0x80);
}
} // namespace Program
