// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>

#include <array>

/// What keeps the state of a program from being certain.
enum class RemarkKind {
    NotUnderstood,  ///< a word whose meaning to this control is not certain
    Call,           ///< a subprogram or macro: it may change anything
    Jump,           ///< lines above may not have been run, or more than once
    Variable,       ///< a value that is not in the program
    BlockSkip,      ///< the operator's switch decides whether the line is run
    StoresData,     ///< offsets or parameters of the control are written
    ZeroShift,      ///< the zero point was moved by where the tool stood
    Transform,      ///< what follows is turned, scaled, mirrored or tilted
    AnotherProgram, ///< the program above ends; what the caller of this one set is not known
};
inline constexpr int remarkKindCount = 9;

struct Remark {
    RemarkKind kind = RemarkKind::NotUnderstood;
    QByteArray text; ///< the word or block, as written
    qsizetype firstLine = 0;
    qsizetype lastLine = 0;
    qsizetype count = 0;
};

/// Gathers remarks, equal ones as one. Of different texts of a kind only the first thousand are kept; all are counted.
class Remarks
{
public:
    static constexpr qsizetype mostOfAKind = 1000;

    void add(RemarkKind kind, QByteArrayView text, qsizetype line);
    const QList<Remark>& list() const { return list_; }
    qsizetype count(RemarkKind kind) const { return counts_[static_cast<std::size_t>(kind)]; }

private:
    static constexpr qsizetype longestText = 80;

    QList<Remark> list_;
    QHash<QByteArray, qsizetype> places_; // by kind and text
    std::array<qsizetype, remarkKindCount> counts_{};
    std::array<qsizetype, remarkKindCount> kept_{};
};
