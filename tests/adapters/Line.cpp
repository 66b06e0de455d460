// SPDX-License-Identifier: GPL-3.0-or-later
#include "Line.h"

#include "Program.h"

namespace
{
// DC1 and DC3 of ISO 646.
constexpr std::uint8_t startCharacter = 0x11;
constexpr std::uint8_t stopCharacter = 0x13;
} // namespace

Line::Line(Control& control, const Row& row, std::size_t bufferSize, std::chrono::milliseconds toHost)
    : control_(control), row_(row), bufferSize_(bufferSize), toHost_(toHost)
{
}

void Line::setOwnFlow(const std::optional<OwnFlow>& flow, bool obeysCts)
{
    ownFlow_ = flow;
    obeysCts_ = obeysCts;
    if (!flow) heldByChip_ = false;
}

Time Line::next(bool wantsRoom) const
{
    const auto characters = wantsRoom ? 1 : control_.untilStop();
    if (!sends() || characters > buffer_.size()) return nextAnswer();
    return std::min(sent_ + static_cast<long>(characters - 1) * row_.characterTime(), nextAnswer());
}

Time Line::nextAnswer() const
{
    return std::min(answers_.empty() ? Time::max() : answers_.front().at, control_.releaseTime().value_or(Time::max()));
}

void Line::runTo(Time now)
{
    for (Time at = nextStep(); at <= now; at = nextStep()) {
        if (sends() && sent_ == at) {
            sendOne();
        } else if (!answers_.empty() && answers_.front().at == at) {
            receiveOne();
        } else {
            control_.release();
            say(at, startCharacter);
        }
    }
    // What comes next into an idle line takes its whole time from now on.
    if (!sends()) sent_ = std::max(sent_, now + row_.characterTime());
}

void Line::say(Time now, std::uint8_t code)
{
    if (row_.holdsByCts) {
        cts_ = code == startCharacter;
        ctsKnown_ = now + toHost_;
        return;
    }
    const Time begin = answers_.empty() ? now : std::max(now, answers_.back().at);
    answers_.push_back({begin + row_.characterTime(), row_.isEven ? Program::marked(code) : code});
}

void Line::sendOne()
{
    const auto code = buffer_.front();
    buffer_.pop_front();
    if (control_.take(sent_, code)) say(sent_, stopCharacter);
    sent_ += row_.characterTime();
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
    for (; taken.size() < most && !arrived_.empty() && arrived_.front().at <= now; arrived_.pop_front())
        taken.push_back(arrived_.front().code);
    if (!taken.empty()) control_.reported(now);
    return taken;
}

bool Line::cts(Time now)
{
    const bool known = now >= ctsKnown_ ? cts_ : !cts_;
    if (!known) control_.reported(now);
    return known;
}

Time Line::nextReport(Time now) const
{
    return std::min(arrived_.empty() ? Time::max() : arrived_.front().at, ctsKnown_ > now ? ctsKnown_ : Time::max());
}
