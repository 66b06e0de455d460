// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/LineCheck.h"

#include "program/Characters.h"
#include "program/Codes.h"

#include <algorithm>

using namespace Characters;

namespace
{
constexpr bool isOneOf(QByteArrayView signs, char c)
{
    return std::find(signs.begin(), signs.end(), c) != signs.end();
}

bool isBeyondAscii(char c)
{
    return static_cast<unsigned char>(c) > 127;
}

// A byte that goes on with a character of several bytes.
bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

// The signs of the ISO code that have a meaning in a program, and those that stand only in comments.
bool isInIsoCode(char c, bool isInComment)
{
    if (isLetter(c) || isDigit(c) || c == ' ' || c == '\t') return true;
    return isOneOf("+-.,/%()[]#*=:", c) || (isInComment && isOneOf("$&'\";<>?@_!", c));
}
} // namespace

LineCheck::Marks LineCheck::check(QByteArrayView line)
{
    line_ = line;
    marks_ = 0;
    block_.read(line);
    checkCharacters();
    checkWords();
    noteWhatItIs();
    return marks_;
}

QList<Finding> LineCheck::describe(QByteArrayView line, qsizetype number)
{
    QList<Finding> words;
    words_ = &words;
    number_ = number;
    check(line);
    words_ = nullptr;
    return words;
}

QByteArray LineCheck::programNumber(QByteArrayView line)
{
    block_.read(line);
    const auto* word = block_.find('O');
    QByteArrayView number = word ? word->number : QByteArrayView();
    while (number.size() > 1 && number.front() == '0')
        number = number.sliced(1);
    return number.toByteArray();
}

// The first finding of a kind stands for all of that line.
void LineCheck::find(FindingKind kind, Severity severity, const QString& text)
{
    if (words_ && !isMarked(kind)) words_->append({kind, severity, number_, text});
    marks_ |= bit(kind);
}

QString LineCheck::characterAt(qsizetype at) const
{
    qsizetype end = at + 1;
    while (end < line_.size() && isContinuation(line_[end]))
        ++end;
    return QString::fromUtf8(line_.sliced(at, end - at));
}

// Goes through what is sent of the line.
void LineCheck::checkCharacters()
{
    qsizetype length = 0;
    qsizetype lastText = 0; // length up to the last that is no blank: stripping takes the blanks behind it along
    qsizetype commentEnd = 0;
    for (qsizetype at = 0; at < line_.size(); ++at) {
        const char c = line_[at];
        if (rules_.stripsComments && c == ';') break;
        if (c == '(' && at >= commentEnd) {
            commentEnd = checkComment(at);
            if (rules_.stripsComments) {
                at = commentEnd - 1;
                continue;
            }
        }
        if (!isContinuation(c)) ++length;
        if (!isBlank(c)) {
            marks_ |= hasText;
            lastText = length;
        }
        if (c == '%' && at >= commentEnd && !block_.isFileHead()) marks_ |= hasPercent;
        checkSign(at, at < commentEnd);
    }
    if (rules_.stripsComments) length = lastText;
    if (length > longestBlock)
        find(FindingKind::TooLong, Severity::Warning,
             words_ ? QStringLiteral("The block has %1 characters; many controls take no more than %2.")
                          .arg(length)
                          .arg(longestBlock)
                    : QString());
}

void LineCheck::checkSign(qsizetype at, bool isInComment)
{
    const char c = line_[at];
    if (isBeyondAscii(c)) {
        if (isMarked(FindingKind::QuestionMark)) return;
        find(FindingKind::QuestionMark, isInComment ? Severity::Note : Severity::Warning,
             words_ ? QStringLiteral("\"%1\" goes out as \"?\".").arg(characterAt(at)) : QString());
        return;
    }
    const bool isControlCode = (c < ' ' && c != '\t') || c == 127;
    const bool hasIsoCode = rules_.maker != CheckRules::Maker::Any;
    if (hasIsoCode && c >= 'a' && c <= 'z' && !isMarked(FindingKind::SmallLetters))
        find(FindingKind::SmallLetters, isInComment ? Severity::Note : Severity::Warning,
             QStringLiteral("Small letters: many controls read capitals only."));
    const bool isForeign = hasIsoCode && !isInIsoCode(c, isInComment) && !(block_.isFileHead() && c == '$');
    if ((!isForeign && !isControlCode) || isMarked(FindingKind::ForeignSign)) return;
    const QString sign = !words_         ? QString()
                         : isControlCode ? QStringLiteral("The control code %1").arg(static_cast<int>(c))
                                         : QStringLiteral("\"%1\"").arg(QLatin1Char(c));
    find(FindingKind::ForeignSign, isInComment ? Severity::Note : Severity::Warning,
         words_ ? sign + QStringLiteral(" is not in the control's code.") : QString());
}

// A comment ends at its first ")", as it does when comments are stripped. Returns where it has ended.
qsizetype LineCheck::checkComment(qsizetype at)
{
    const qsizetype close = line_.indexOf(')', at);
    if (close < 0) {
        find(FindingKind::OpenComment, Severity::Warning,
             rules_.stripsComments
                 ? QStringLiteral("The comment is not closed: all that follows it on the line is stripped.")
                 : QStringLiteral("The comment is not closed."));
        return line_.size();
    }
    const qsizetype inner = line_.indexOf('(', at + 1);
    const bool isNested = inner >= 0 && inner < close;
    if (isNested && rules_.stripsComments && !isMarked(FindingKind::NestedComment)) {
        constexpr qsizetype shown = 40;
        const auto left = line_.sliced(close + 1).trimmed();
        find(FindingKind::NestedComment, Severity::Warning,
             words_ ? QStringLiteral("The comment has another in it and is stripped up to the first \")\": what "
                                     "follows goes out as program: \"%1\".")
                          .arg(QString::fromUtf8(left.first(std::min(shown, left.size()))))
                    : QString());
    }
    return close + 1;
}

void LineCheck::checkWords()
{
    const bool hasFlow = !block_.names().isEmpty(); // "IF [..] N100" names a second block
    bool isMacro = false;                           // G65 takes I, J and K several times
    quint32 seen = 0;
    for (const auto& word : block_.words()) {
        checkWord(word);
        if (word.afterComma || word.letter == 'M') continue;
        if (word.letter == 'G') {
            const int number = Codes::number(word.number);
            isMacro = isMacro || number == 650 || number == 660 || number == 661;
            continue;
        }
        const quint32 letter = 1U << static_cast<unsigned>(word.letter - 'A');
        const bool mayRepeat = (isMacro && isOneOf("IJK", word.letter)) || (hasFlow && word.letter == 'N');
        if ((seen & letter) != 0 && !mayRepeat)
            find(FindingKind::DoubledWord, Severity::Warning,
                 words_ ? QStringLiteral("%1 stands twice in the block.").arg(QLatin1Char(word.letter)) : QString());
        seen |= letter;
    }
}

void LineCheck::checkWord(const Block::Word& word)
{
    const bool isMissing = word.form == Block::Form::Missing;
    if (!isMissing && word.form != Block::Form::Malformed) return;
    const QString sentence = isMissing ? QStringLiteral("%1 has no number.") : QStringLiteral("%1: that is no number.");
    find(FindingKind::NoNumber, Severity::Warning, words_ ? sentence.arg(QString::fromUtf8(word.text)) : QString());
}

void LineCheck::noteWhatItIs()
{
    const auto isFirstWord = [](const Block::Word& word) { return word.letter != 'N'; };
    const auto first = std::find_if(block_.words().begin(), block_.words().end(), isFirstWord);
    if (first != block_.words().end() && first->letter == 'O' && block_.names().isEmpty()) marks_ |= hasProgramNumber;
    if (block_.isSkippable()) return; // the switch may take the end away
    for (const auto& word : block_.words()) {
        const int number = word.letter == 'M' && word.form == Block::Form::Number ? Codes::number(word.number) : -1;
        const bool isReturn = number == 990 && rules_.maker != CheckRules::Maker::Okuma;
        if (number == 20 || number == 300 || isReturn) marks_ |= hasEnd;
    }
    if (rules_.maker != CheckRules::Maker::Fanuc && block_.hasName("RTS")) marks_ |= hasEnd;
}
