// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/ReceivedPrograms.h"

#include "protocol/LineEnds.h"

#include <utility>

namespace
{
using LineEnds::isLineEnd;

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

// Leader, tape codes, blanks and line ends are none.
bool isText(char c)
{
    const auto code = static_cast<unsigned char>(c);
    return code > ' ' && code != 0x7F;
}
} // namespace

void ReceivedPrograms::listenTo(ControlType type, bool isXModem)
{
    type_ = type;
    isXModem_ = isXModem;
}

QList<ReceivedPrograms::Program> ReceivedPrograms::take(const QByteArray& bytes)
{
    for (const char c : bytes)
        takeByte(c);
    return std::exchange(ended_, {});
}

std::optional<ReceivedPrograms::Program> ReceivedPrograms::end()
{
    std::optional<Program> program;
    if (hasText_) {
        // An Okuma always stops the tape, and a Fanuc always closes.
        const bool isEndDue = isXModem_ || isOpened_ || type_ != ControlType::General;
        program = Program{bytes_, isClosed() ? End::Closed : isEndDue ? End::Missing : End::Unmarked};
    }
    beginAnew({});
    return program;
}

void ReceivedPrograms::beginAnew(const QByteArray& bytes)
{
    bytes_ = bytes;
    lineAt_ = 0;
    at_ = At::LineHead;
    hasText_ = isOpened_ = isNumbered_ = false;
}

bool ReceivedPrograms::isClosed() const
{
    return hasText_ && (at_ == At::Closed || at_ == At::Percent);
}

void ReceivedPrograms::takeByte(char c)
{
    if (at_ == At::Closed && !isLineEnd(c)) cut(bytes_.size()); // the next one's leader, or its first line
    bytes_ += c;
    if (isXModem_) {
        if (isText(c)) begin();
    } else if (c == Framing::tapeStop) {
        if (hasText_) cut(bytes_.size());
    } else if (isLineEnd(c)) {
        endLine();
        if (at_ == At::Closed && c == '\n') cut(bytes_.size());
    } else if (at_ == At::Percent) {
        followPercent(c);
    } else if (at_ == At::Number) {
        followNumber(c);
    } else if (at_ == At::LineHead && isText(c)) {
        beginLine(c);
    }
}

void ReceivedPrograms::beginLine(char c)
{
    const bool isOkuma = type_ == ControlType::Okuma;
    hasDigits_ = false;
    if (c == '%' && !isOkuma) {
        at_ = At::Percent;
        return;
    }
    if (c == '$' && isOkuma && hasText_) cut(lineAt_);
    at_ = (c == 'O' || c == 'o' || c == ':') && !isOkuma ? At::Number : At::Inside;
    begin();
}

// Alone in its line it opens or closes a program, with a name it is the head of one.
void ReceivedPrograms::followPercent(char c)
{
    if (isBlank(c)) return;
    if (!isText(c)) { // the leader follows without a line end
        endLine();
        if (at_ == At::Closed) cut(bytes_.size() - 1);
        return;
    }
    if (hasText_) cut(lineAt_);
    isOpened_ = false;
    begin();
    at_ = At::Inside;
}

// Alone in its line, or before a comment, it is that of a program. Other controls have such words before a block.
void ReceivedPrograms::followNumber(char c)
{
    const bool isDigit = c >= '0' && c <= '9';
    hasDigits_ = hasDigits_ || isDigit;
    if (isDigit || (hasDigits_ && !isText(c))) return;
    if (hasDigits_ && c == '(') return endLine();
    at_ = At::Inside;
}

// Also before the comment that ends the line: what it began with is known then.
void ReceivedPrograms::endLine()
{
    if (at_ == At::Closed) return;
    const bool isComment = bytes_.endsWith('(');
    const auto was = std::exchange(at_, isComment ? At::Inside : At::LineHead);
    if (was == At::Percent) {
        isOpened_ = true;
        if (hasText_) at_ = At::Closed;
    }
    if (was == At::Number && hasDigits_) {
        if (isNumbered_) {
            const bool isInFrame = isOpened_;
            cut(lineAt_);
            at_ = isComment ? At::Inside : At::LineHead;
            isOpened_ = isInFrame;
            begin();
        }
        isNumbered_ = true;
    }
    if (!isComment) lineAt_ = bytes_.size();
}

void ReceivedPrograms::begin()
{
    if (!std::exchange(hasText_, true)) ++count_;
}

// What stands before the position is a program that has ended; the rest begins the next one.
void ReceivedPrograms::cut(qsizetype position)
{
    ended_.append({bytes_.first(position), End::Closed});
    beginAnew(bytes_.mid(position));
}
