// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <charconv>
#include <chrono>
#include <cstring>
#include <optional>

/// One row of the table: how the line is set. Adapter and sender are both given it as arguments.
struct Row {
    unsigned long speed = 0;
    bool isEven = false;     ///< 7 bits and even parity; 8 bits otherwise
    bool holdsByCts = false; ///< with XON and XOFF otherwise

    static constexpr auto usage = "SPEED 8n|7e xon|cts";
    static constexpr int arguments = 3;
    /// Nothing if the arguments are no row.
    static std::optional<Row> from(const char* const* words)
    {
        const auto is = [&](int word, const char* text) { return std::strcmp(words[word], text) == 0; };
        Row row{0, is(1, "7e"), is(2, "cts")};
        std::from_chars(words[0], words[0] + std::strlen(words[0]), row.speed);
        const bool isKnown = (row.isEven || is(1, "8n")) && (row.holdsByCts || is(2, "xon"));
        return row.speed > 0 && isKnown ? std::optional(row) : std::nullopt;
    }

    /// Ten bits, by a clock that is 1 % slow, as cheap chips' are.
    std::chrono::nanoseconds characterTime() const
    {
        return std::chrono::nanoseconds(static_cast<std::chrono::nanoseconds::rep>(10'100'000'000 / speed));
    }
};
