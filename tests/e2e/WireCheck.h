// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <algorithm>

/// Judges what one control received: only lines of the programs of its own machine, each whole and in order. The order
/// may break, even within a line, only where a send began, and then goes on with the line that this send began with.
class WireCheck
{
public:
    /// A program of a machine: every line begins with its letter and the program's number. Random
    /// operators type 'q' into texts; it is ignored.
    QByteArray addProgram(char letter, int number, int blocks)
    {
        QByteArray text;
        for (int line = 1; line <= blocks; ++line)
            text += letter + QByteArray::number(number) + QByteArray::number(line).rightJustified(6, '0') + " X\n";
        programs_ << onWire(text);
        return text;
    }

    /// A send begins here, with this line of the editor.
    void sendBegins(const QByteArray& line) { starts_ << onWire(line); }

    /// Takes all that was received so far. Returns what is wrong, or nothing.
    QString take(QByteArray received)
    {
        received.replace("q", "");
        for (qsizetype end = 0; (end = received.indexOf('\n', at_)) >= 0; at_ = end + 1, ++lines) {
            const QByteArray line = received.mid(at_, end + 1 - at_);
            if (line == next_ ? place(line) : begins(line)) continue;
            // A stop cut a line off: the part of it that came, then the first line of the next send.
            const qsizetype torn = line.lastIndexOf(programs_[0][0]);
            if (torn <= 0 || !isPartOfLines(line.left(torn)) || !begins(line.mid(torn)))
                return QString::fromLatin1(line.left(80) + " came, not " + next_ + " or a send's first line");
        }
        return {};
    }

    qsizetype lines = 0; ///< that arrived whole

private:
    static QByteArray onWire(QByteArray text) { return text.replace("q", "").replace("\n", "\r\n"); }

    bool begins(const QByteArray& line)
    {
        const qsizetype start = starts_.indexOf(line, usedStarts_);
        if (start >= 0) usedStarts_ = start + 1;
        return start >= 0 && place(line);
    }

    // Several sends may be cut off in a row, each anywhere in its line.
    bool isPartOfLines(const QByteArray& cut) const
    {
        const auto parts = cut.split(programs_[0][0]);
        return std::all_of(parts.begin(), parts.end(), [this](const QByteArray& part) {
            return std::any_of(programs_.begin(), programs_.end(), [&](auto& text) { return text.contains(part); });
        });
    }

    bool place(const QByteArray& line)
    {
        for (const QByteArray& program : programs_) {
            const qsizetype at = program.indexOf(line);
            if (at < 0 || line[0] != program[0]) continue;
            // After the last line a repeating machine starts again.
            const qsizetype from = at + line.size() < program.size() ? at + line.size() : 0;
            next_ = program.mid(from, program.indexOf('\n', from) + 1 - from);
            return true;
        }
        return false;
    }

    QList<QByteArray> programs_, starts_;
    QByteArray next_;
    qsizetype at_ = 0, usedStarts_ = 0;
};
