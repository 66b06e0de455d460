// SPDX-License-Identifier: GPL-3.0-or-later
#include "Control.h"

#include "Program.h"

#include <algorithm>
#include <cstdlib>

namespace
{
using namespace std::chrono_literals;
// DC1 and DC3 of ISO 646.
constexpr std::uint8_t startCharacter = 0x11;
constexpr std::uint8_t stopCharacter = 0x13;

constexpr std::size_t room = 10;      // behind the stop
constexpr auto holdTime = 150ms;      // after the last character
constexpr std::size_t distance = 250; // from one stop to the next, at least
constexpr int fewestStops = 5;        // fewer prove nothing
} // namespace

std::optional<std::uint8_t> Control::take(Time now, std::uint8_t character)
{
    lastArrival_ = now;
    if (isHolding_ && ++afterStop_ > room) return {};
    received_ += static_cast<char>(character);
    if (isHolding_ || received_.size() < nextStop_) return {};
    isHolding_ = true;
    afterStop_ = 0;
    ++stops_;
    return evenParity_ ? Program::marked(stopCharacter) : stopCharacter;
}

std::optional<Time> Control::releaseTime() const
{
    if (!isHolding_) return {};
    return lastArrival_ + holdTime;
}

std::uint8_t Control::release()
{
    isHolding_ = false;
    worst_ = std::max(worst_, afterStop_);
    // Any moment of the sender's rhythm; the same moments in each run.
    nextStop_ = received_.size() + distance + static_cast<std::size_t>(std::rand() % 64);
    return evenParity_ ? Program::marked(startCharacter) : startCharacter;
}

std::string Control::expected() const
{
    std::string program = Program::whole();
    if (evenParity_)
        for (char& character : program)
            character = static_cast<char>(Program::marked(static_cast<std::uint8_t>(character)));
    return program;
}

std::size_t Control::count(int block) const
{
    std::string text = received_;
    if (evenParity_)
        for (char& character : text)
            character = static_cast<char>(character & 0x7F);
    std::size_t found = 0;
    const std::string wanted = Program::block(block);
    for (auto at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1))
        ++found;
    return found;
}

std::string Control::report() const
{
    int lost = 0, twice = 0;
    for (int block = 1; block <= Program::blocks; ++block) {
        lost += count(block) == 0 ? 1 : 0;
        twice += count(block) > 1 ? 1 : 0;
    }
    return std::to_string(stops_) + " | " + std::to_string(worst_) + " | " + std::to_string(lost) + " | " +
           std::to_string(twice) + " | " + (received_ == expected() ? "yes" : "NO") + " |";
}

bool Control::isContent() const
{
    return received_ == expected() && worst_ <= room && stops_ >= fewestStops && !isHolding_;
}
