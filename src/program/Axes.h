// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Decimal.h"

#include <QByteArray>

#include <array>

/// Where the program has brought an axis.
struct AxisPosition {
    enum class Status {
        Unsaid,      ///< the program has not moved it
        Known,       ///< stands at `text`
        Unknown,     ///< moved to where the program does not say
        AtReference, ///< stands at its reference point
    };
    Status status = Status::Unsaid;
    QByteArray text;    ///< as written, or the sum of what was written
    bool isSum = false; ///< of incremental words
    qsizetype line = 0; ///< that brought it there, or that made it unknown
    QByteArray cause;   ///< the word that made it unknown, or the code of the reference point

    bool isKnown() const { return status == Status::Known; }
};

/// The axes of a program that is read line by line. Numbers are kept as written; only incremental words are added up,
/// and a sum of mixed forms ("10" and "10.") is not known.
class Axes
{
public:
    static constexpr QByteArrayView letters = "XYZABCUVW";
    static constexpr int count = 9;
    static int indexOf(char letter) { return static_cast<int>(letters.indexOf(letter)); } ///< -1: no axis

    void setTo(int axis, QByteArrayView number, qsizetype line);
    void moveBy(int axis, QByteArrayView number, qsizetype times, qsizetype line);
    void lose(int axis, QByteArrayView cause, qsizetype line);
    void loseAll(QByteArrayView cause, qsizetype line); ///< those that have been said
    void toReference(int axis, QByteArrayView cause, qsizetype line);
    AxisPosition at(int axis) const;
    bool isKnown(int axis) const { return axes_[static_cast<std::size_t>(axis)].position.isKnown(); }

private:
    struct Axis {
        AxisPosition position;
        std::optional<Decimal> sum; // takes the place of position.text, which is made when it is asked for
    };
    void leave(int axis, AxisPosition::Status status, QByteArrayView cause, qsizetype line);

    std::array<Axis, count> axes_;
};
