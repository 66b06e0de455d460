// SPDX-License-Identifier: GPL-3.0-or-later
#include "Line.h"

#include <algorithm>

namespace
{
// 10 bits at 9600 baud, by a clock that is 1 % slow, as cheap chips' are.
constexpr std::chrono::nanoseconds characterTime{1'041'667 * 101 / 100};
} // namespace

Line::Line(Control& control, std::size_t bufferSize, std::chrono::milliseconds toHost)
    : control_(control), bufferSize_(bufferSize), toHost_(toHost)
{
}

void Line::setOwnFlow(const std::optional<OwnFlow>& flow)
{
    ownFlow_ = flow;
    if (!flow) heldByChip_ = false;
}

Time Line::next() const
{
    return std::min({sends() ? sent_ : Time::max(), answers_.empty() ? Time::max() : answers_.front().at,
                     control_.releaseTime().value_or(Time::max())});
}

void Line::runTo(Time now)
{
    for (Time at = next(); at <= now; at = next()) {
        if (sends() && sent_ == at)
            sendOne();
        else if (!answers_.empty() && answers_.front().at == at)
            receiveOne();
        else
            answer(at, control_.release());
    }
    // What comes next into an idle line takes its whole time from now on.
    if (!sends()) sent_ = std::max(sent_, now + characterTime);
}

void Line::answer(Time now, std::uint8_t code)
{
    const Time begin = answers_.empty() ? now : std::max(now, answers_.back().at);
    answers_.push_back({begin + characterTime, code});
}

void Line::sendOne()
{
    const auto code = buffer_.front();
    buffer_.pop_front();
    if (const auto said = control_.take(sent_, code)) answer(sent_, *said);
    sent_ += characterTime;
}

// A chip that holds the line itself keeps the characters of that to itself.
void Line::receiveOne()
{
    const auto [at, code] = answers_.front();
    answers_.pop_front();
    if (ownFlow_ && code == ownFlow_->stop)
        heldByChip_ = true;
    else if (ownFlow_ && code == ownFlow_->start)
        heldByChip_ = false;
    else
        arrived_.push_back({at + toHost_, code});
}

Bytes Line::takeArrived(Time now, std::size_t most)
{
    Bytes taken;
    for (; taken.size() < most && nextArrival() <= now; arrived_.pop_front())
        taken.push_back(arrived_.front().code);
    return taken;
}
