// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/XModemReceive.h"

#include "protocol/XModemBlock.h"
#include "protocol/XModemCodes.h"

#include <utility>

using namespace XModemCodes;

namespace
{
// In ticks of the one-second timer.
constexpr int pollTicks = 2;
constexpr int refusedSilence = 2; // after a refused block, before a plain NAK
constexpr int refusedRepeat = 5;  // and between further ones
constexpr int stalledSilence = 5; // until a block that stays incomplete is dropped

// In polls that brought no answer.
constexpr int pollsBeforePlain = 3;   // the opening ones
constexpr int pollsAfterNoise = 1;    // a block has come whose SOH was lost
constexpr int pollsAfterSilence = 30; // a minute: longer than any sender pauses
} // namespace

XModemReceive::Step XModemReceive::take(const QByteArray& bytes)
{
    Step step;
    int cancels = 0;
    for (const char byte : bytes) {
        if (state_ == State::InBlock || byte == SOH) {
            gather(byte);
        } else if (byte == EOT && isEndBelieved(bytes)) {
            step.replies << Reply::Ack;
            step.isWhole = true;
            state_ = State::Between;
            forgetSender();
        } else {
            ++noise_;
            isQuiet_ = false;
            cancels += byte == CAN;
        }
    }
    if (packet_.size() >= XModemBlock::size) finishBlock(step);
    step.isCancelled = cancels >= 2; // one may be a damaged byte
    if (step.isCancelled) noteCancel();
    return step;
}

void XModemReceive::gather(char byte)
{
    if (state_ != State::InBlock) {
        state_ = State::InBlock;
        isOpened_ = true;
        noise_ = 0;
        polls_ = 0;
        packet_.clear();
    }
    packet_.append(byte);
    silence_ = 0;
}

// After a refused or stalled block the byte may be a leftover of that block; the end comes alone and after a pause. A
// stall is a pause itself, and the sender may answer our NAK with the end at once.
bool XModemReceive::isEndBelieved(const QByteArray& bytes) const
{
    if (state_ == State::Between) return true;
    const bool isAfterPause = state_ == State::Refused ? silence_ > 0 : isQuiet_;
    return isAfterPause && bytes.count(EOT) == bytes.size();
}

void XModemReceive::finishBlock(Step& step)
{
    const QByteArray packet = std::exchange(packet_, {});
    if (!XModemBlock::isGood(packet)) {
        step.replies << Reply::MarkedNak;
        state_ = State::Refused;
        return;
    }
    step.replies << Reply::Ack;
    step.program = XModemBlock::data(packet);
    state_ = State::Between;
    noteNumber(static_cast<unsigned char>(packet[1]) & 0x7F); // the line strips bit 7
}

// Numbers decide nothing, but a block that came twice or not at all must not go unnoticed: an EOT that noise makes up
// acknowledges the block that it stood in.
void XModemReceive::noteNumber(int number)
{
    if (lastNumber_ < 0 && number == 1) programBlocks_ = 0; // another number goes on after a false end
    // 255 reads as 127, and 0 or 1 follows it.
    const bool isNext =
        lastNumber_ < 0 ? number == 1 : number == ((lastNumber_ + 1) & 0x7F) || (lastNumber_ == 0x7F && number == 1);
    if (number == lastNumber_) {
        ++repeats_;
        repeated_ = QStringLiteral("Block %1 came twice and stands twice in the program (%2 repeated so far)")
                        .arg(programBlocks_)
                        .arg(repeats_);
    } else {
        if (!isNext)
            missing_ =
                QStringLiteral("Blocks are missing after block %1: the program is not whole").arg(programBlocks_);
        ++blocks_;
        ++programBlocks_;
    }
    lastNumber_ = number;
}

void XModemReceive::noteCancel()
{
    state_ = State::Between;
    forgetSender();
    missing_ = QStringLiteral("The control cancelled after block %1: the program is not whole").arg(programBlocks_);
}

// What comes next is another program.
void XModemReceive::forgetSender()
{
    isOpened_ = false;
    noise_ = 0;
    polls_ = 0;
    lastNumber_ = -1;
}

void XModemReceive::forgetProgram()
{
    blocks_ = programBlocks_ = repeats_ = 0;
    lastNumber_ = -1;
    missing_.clear();
    repeated_.clear();
}

XModemReceive::Step XModemReceive::tick()
{
    Step step;
    ++silence_;
    isQuiet_ = true;
    switch (state_) {
    case State::Between:
        poll(step);
        break;
    case State::InBlock:
        if (silence_ < stalledSilence) break;
        packet_.clear();
        silence_ = 0;
        step.replies << Reply::MarkedNak;
        state_ = State::Stalled;
        break;
    case State::Refused:
    case State::Stalled:
        if (const int late = silence_ - refusedSilence; late >= 0 && late % refusedRepeat == 0)
            step.replies << Reply::PlainNak;
        break;
    }
    return step;
}

void XModemReceive::poll(Step& step)
{
    if (silence_ >= pollTicks) {
        silence_ = 0;
        ++polls_;
        step.replies << Reply::MarkedNak;
    } else if (!isOpened_) {
        if (polls_ >= pollsBeforePlain) step.replies << Reply::PlainNak;
    } else if (polls_ >= (hasMissedBlock() ? pollsAfterNoise : pollsAfterSilence)) {
        // A plain peer waits for an answer as long as our marked NAKs keep coming. If only our ACK was lost, a plain
        // NAK makes it repeat a block that we have; so it comes very late, unless the block itself was lost.
        polls_ = 0;
        noise_ = 0;
        step.replies << Reply::PlainNak;
    }
}

// A block that lost its SOH counts as noise, but nothing else brings that many bytes.
bool XModemReceive::hasMissedBlock() const
{
    return noise_ >= XModemBlock::dataSize;
}

QString XModemReceive::notice() const
{
    return missing_ + (missing_.isEmpty() || repeated_.isEmpty() ? QString() : QStringLiteral("\n")) + repeated_;
}
