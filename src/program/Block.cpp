// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/Block.h"

#include "program/Characters.h"

#include <algorithm>
#include <utility>

using namespace Characters;

static Block::Form formOf(QByteArrayView value)
{
    if (value.isEmpty()) return Block::Form::Missing;
    const QByteArrayView unsignedValue = value.sliced(value.front() == '+' || value.front() == '-' ? 1 : 0);
    const auto isNumeral = [](char c) { return isDigit(c) || c == '.'; };
    const bool hasDigit = std::any_of(unsignedValue.begin(), unsignedValue.end(), isDigit);
    if (std::all_of(unsignedValue.begin(), unsignedValue.end(), isNumeral)) {
        const auto points = std::count(unsignedValue.begin(), unsignedValue.end(), '.');
        return hasDigit && points <= 1 ? Block::Form::Number : Block::Form::Malformed;
    }
    const bool isWorkedOut = std::any_of(value.begin(), value.end(), [](char c) { return c == '#' || c == '['; });
    return isWorkedOut || std::any_of(value.begin(), value.end(), isLetter) ? Block::Form::Expression
                                                                            : Block::Form::Malformed;
}

void Block::read(QByteArrayView line)
{
    clear();
    line_ = line;
    skipBlanks();
    isFileHead_ = peek() == '$';
    if (isFileHead_) return;
    isSkippable_ = peek() == '/';
    if (isSkippable_) {
        ++at_;
        while (isDigit(peek())) // "/2": the second switch
            ++at_;
    }
    for (skipBlanks(); at_ < line_.size() && peek() != ';'; skipBlanks())
        readItem();
}

void Block::clear()
{
    for (const Word& word : words_)
        last_[static_cast<std::size_t>(word.letter - 'A')] = 0;
    words_.clear();
    names_.clear();
    strays_.clear();
    assignment_ = {};
    isSkippable_ = isFileHead_ = afterComma_ = false;
    openComment_ = -1;
    at_ = 0;
}

void Block::skipBlanks()
{
    while (at_ < line_.size() && isBlank(line_[at_]))
        ++at_;
}

void Block::readItem()
{
    const char c = peek();
    if (c == '(') return readComment();
    if (isLetter(c)) return isLetter(peek(1)) ? readName() : readWord();
    if (c == ':') return readWord();
    if (c == ',' && isLetter(peek(1))) {
        afterComma_ = true;
        ++at_;
        return;
    }
    if (c == '#') {
        const qsizetype begin = at_;
        at_ = line_.size(); // an assignment takes the rest of the block
        const qsizetype comment = line_.sliced(begin).indexOf('(');
        if (comment >= 0) at_ = begin + comment;
        assignment_ = since(begin).trimmed();
        return;
    }
    if (c == '[') return readBrackets(); // the condition behind IF and WHILE
    readStray();
}

void Block::readComment()
{
    const qsizetype end = line_.sliced(at_).indexOf(')');
    if (end < 0) {
        openComment_ = at_;
        at_ = line_.size();
    } else {
        at_ += end + 1;
    }
}

void Block::readName()
{
    const qsizetype begin = at_;
    while (isLetter(peek()) || isDigit(peek()))
        ++at_;
    Name name{since(begin), {}};
    skipBlanks();
    if (peek() == '=') {
        ++at_;
        skipBlanks();
        const qsizetype value = at_;
        readSetValue();
        name.value = since(value);
    }
    afterComma_ = false;
    names_.append(name);
}

void Block::readWord()
{
    const qsizetype begin = at_;
    Word word;
    word.letter = peek() == ':' ? 'O' : upper(peek()); // ":" is the ISO tape's O
    word.afterComma = std::exchange(afterComma_, false);
    const qsizetype letterEnd = ++at_;
    skipBlanks();
    const bool isSet = peek() == '=';
    if (isSet) {
        ++at_;
        skipBlanks();
    }
    const qsizetype value = at_;
    if (isSet)
        readSetValue();
    else
        readValue();
    word.number = since(value);
    word.form = formOf(word.number);
    if (word.form == Form::Missing && !isSet) at_ = letterEnd;
    word.text = since(begin);
    add(word);
}

// A number, or what a macro works out: "#101", "-#[1+2]", "[#1*2]".
void Block::readValue()
{
    const auto isSign = [](char c) { return c == '+' || c == '-' || c == '#'; };
    while (isSign(peek()))
        ++at_;
    if (peek() == '[') return readBrackets();
    while (isDigit(peek()) || peek() == '.')
        ++at_;
}

// What follows "=": up to a blank that stands outside brackets.
void Block::readSetValue()
{
    while (at_ < line_.size() && !isBlank(peek()) && peek() != '(' && peek() != ';') {
        if (peek() == '[')
            readBrackets();
        else
            ++at_;
    }
}

void Block::readBrackets()
{
    int depth = 0;
    do {
        depth += peek() == '[' ? 1 : peek() == ']' ? -1 : 0;
        ++at_;
    } while (at_ < line_.size() && depth > 0);
}

void Block::readStray()
{
    const qsizetype begin = at_++;
    while (at_ < line_.size() && !isLetter(peek()) && !isBlank(peek()) && !QByteArrayView("([;,#:").contains(peek()))
        ++at_;
    strays_.append(since(begin));
}

void Block::add(const Word& word)
{
    words_.append(word);
    if (!word.afterComma) last_[static_cast<std::size_t>(word.letter - 'A')] = words_.size();
}

const Block::Word* Block::find(char letter) const
{
    const qsizetype place = last_[static_cast<std::size_t>(letter - 'A')];
    return place == 0 ? nullptr : &words_[place - 1];
}

bool Block::hasName(QByteArrayView start) const
{
    return std::any_of(names_.begin(), names_.end(), [start](const Name& name) {
        return name.text.size() >= start.size() &&
               std::equal(start.begin(), start.end(), name.text.begin(), [](char a, char b) { return a == upper(b); });
    });
}
