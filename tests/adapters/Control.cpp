// SPDX-License-Identifier: GPL-3.0-or-later
#include "Control.h"

#include "Program.h"

#include <algorithm>
#include <cstdlib>

namespace
{
using namespace std::chrono_literals;

// What controls are promised: in characters on a slow line, by the line's time on a fast one.
constexpr unsigned long fastestSlow = 9600;
constexpr std::size_t usual = 10, most = 16;
constexpr auto mostTime = 4ms; // besides the adapter's delay

constexpr auto holdTime = 150ms;      // after the last character
constexpr std::size_t distance = 380; // from one stop to the next, at least
constexpr std::size_t fewestHolds = 20;
} // namespace

bool Control::take(Time now, std::uint8_t character)
{
    lastArrival_ = now;
    received_ += static_cast<char>(character);
    if (isHolding_) ++holds_.back().after;
    if (isHolding_ || received_.size() < nextStop_) return false;
    isHolding_ = true;
    isReported_ = false;
    stopped_ = now;
    holds_.push_back({});
    return true;
}

std::size_t Control::untilStop() const
{
    if (isHolding_) return std::string::npos;
    return nextStop_ > received_.size() ? nextStop_ - received_.size() : 1;
}

void Control::reported(Time now)
{
    if (!isHolding_ || isReported_) return;
    isReported_ = true;
    holds_.back().delay = now - stopped_;
}

std::optional<Time> Control::releaseTime() const
{
    if (!isHolding_) return {};
    return lastArrival_ + holdTime;
}

void Control::release()
{
    isHolding_ = false;
    // Any moment of the sender's rhythm; the same moments in each run.
    nextStop_ = received_.size() + distance + static_cast<std::size_t>(std::rand() % 64);
}

std::string Control::expected() const
{
    std::string program = Program::whole();
    if (row_.isEven)
        for (char& character : program)
            character = static_cast<char>(Program::marked(static_cast<std::uint8_t>(character)));
    return program;
}

std::size_t Control::count(int block) const
{
    std::string text = received_;
    if (row_.isEven)
        for (char& character : text)
            character = static_cast<char>(character & 0x7F);
    std::size_t found = 0;
    const std::string wanted = Program::block(block);
    for (auto at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1))
        ++found;
    return found;
}

std::size_t Control::middle() const
{
    std::vector<std::size_t> counts;
    for (const Hold& hold : holds_)
        counts.push_back(hold.after);
    std::sort(counts.begin(), counts.end());
    return counts.empty() ? 0 : counts[counts.size() / 2];
}

std::size_t Control::promised(const Hold& hold) const
{
    if (row_.speed <= fastestSlow) return most;
    return static_cast<std::size_t>((mostTime + hold.delay) / row_.characterTime());
}

// The one with the least to spare.
const Control::Hold& Control::worst() const
{
    static const Hold none{};
    const auto spare = [this](const Hold& hold) {
        return static_cast<long>(promised(hold)) - static_cast<long>(hold.after);
    };
    const auto found = std::min_element(holds_.begin(), holds_.end(),
                                        [&](const Hold& a, const Hold& b) { return spare(a) < spare(b); });
    return found == holds_.end() ? none : *found;
}

std::string Control::report() const
{
    int lost = 0, twice = 0;
    for (int block = 1; block <= Program::blocks; ++block) {
        lost += count(block) == 0 ? 1 : 0;
        twice += count(block) > 1 ? 1 : 0;
    }
    std::string text = std::to_string(holds_.size());
    for (const auto figure : {middle(), worst().after, promised(worst())})
        text += ' ' + std::to_string(figure);
    return text + ' ' + std::to_string(lost) + ' ' + std::to_string(twice) + ' ' +
           (received_ == expected() ? "right" : "WRONG");
}

bool Control::isContent() const
{
    return received_ == expected() && worst().after <= promised(worst()) &&
           (row_.speed > fastestSlow || middle() <= usual) && holds_.size() >= fewestHolds && !isHolding_;
}
