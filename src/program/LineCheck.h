// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Block.h"
#include "program/Finding.h"

#include <QList>

/// Whose control the program goes to, and what the machine's settings do to it on the way.
struct CheckRules {
    enum class Maker { Any, Fanuc, Okuma };
    Maker maker = Maker::Any;
    bool stripsComments = false;
    // Of the bytes that the machine's settings put around a program. A Fanuc's program loses its own "%" for them.
    bool headHasPercent = false;
    bool tailHasPercent = false;

    bool operator==(const CheckRules&) const = default;
};

/// Checks single lines. Each takes the same time whatever the program; belongs to one thread.
class LineCheck
{
public:
    /// What a line has: a bit for each kind of finding, and what the check of the whole program needs to know of it.
    using Marks = quint16;
    static constexpr Marks findings = 0x00FF;
    static constexpr Marks hasText = 0x0100;
    static constexpr Marks hasPercent = 0x0200;
    static constexpr Marks hasProgramNumber = 0x0400;
    static constexpr Marks hasEnd = 0x0800;
    static constexpr Marks bit(FindingKind kind) { return static_cast<Marks>(1U << static_cast<unsigned>(kind)); }

    static constexpr qsizetype longestBlock = 255;

    explicit LineCheck(const CheckRules& rules) : rules_(rules) {}

    Marks check(QByteArrayView line);
    /// The findings behind the marks, in words.
    QList<Finding> describe(QByteArrayView line, qsizetype number);
    /// The O number of a line with hasProgramNumber, without leading zeros.
    QByteArray programNumber(QByteArrayView line);

    const CheckRules& rules() const { return rules_; }

private:
    void checkCharacters();
    void checkSign(qsizetype at, bool isInComment);
    qsizetype checkComment(qsizetype at);
    void checkWords();
    void checkWord(const Block::Word& word);
    void noteWhatItIs();
    void find(FindingKind kind, Severity severity, const QString& text);
    bool isMarked(FindingKind kind) const { return (marks_ & bit(kind)) != 0; }
    QString characterAt(qsizetype at) const;

    CheckRules rules_;
    Block block_;
    QByteArrayView line_;
    Marks marks_ = 0;
    QList<Finding>* words_ = nullptr; // where to, while findings are put into words
    qsizetype number_ = 0;
};
