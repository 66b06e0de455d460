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
    /// A machine's program: every line begins with its letter and the program's number. 'q' is what operators type in
    /// to spoil a text; it counts as nothing.
    static QByteArray program(char letter, int number, int lines)
    {
        QByteArray text;
        for (int line = 1; line <= lines; ++line)
            text += letter + QByteArray::number(number) + QByteArray::number(line).rightJustified(6, '0') + " X" +
                    QByteArray::number(line) + ".5\n";
        return text;
    }

    void addProgram(const QByteArray& text) { programs_ << QByteArray(text).replace("\n", "\r\n"); }

    /// A send begins here; the line is the editor's, as it will go out.
    void sendBegins(const QByteArray& line) { starts_ << QByteArray(line).replace("q", "").replace("\n", "\r\n"); }

    /// All that was received until now. Returns what is wrong, or nothing.
    QString take(const QByteArray& received)
    {
        for (; seen_ < received.size(); ++seen_)
            if (received[seen_] != 'q') wire_ += received[seen_];
        return judge();
    }

    qsizetype lines = 0;  ///< that arrived whole
    qsizetype breaks = 0; ///< in their order

private:
    QString judge()
    {
        while (at_ < wire_.size()) {
            const qsizetype end = wire_.indexOf('\n', at_);
            if (end < 0) return {}; // not all of this line has come
            const QByteArray line = wire_.mid(at_, end + 1 - at_);
            if (!follows(line) && !begins(line)) {
                const qsizetype torn = line.lastIndexOf(letter());
                // The stop cut a line off: what came of it, then the line that the next send began with.
                const bool isTorn = torn > 0 && isPartOfALine(line.left(torn)) && begins(line.mid(torn));
                if (!isTorn)
                    return QStringLiteral("byte %1: \"%2\" does not follow \"%3\" and no send begins with it")
                        .arg(at_)
                        .arg(QString::fromLatin1(line.left(80)), QString::fromLatin1(next_.left(30)));
            }
            at_ = end + 1;
            ++lines;
        }
        return {};
    }

    char letter() const { return programs_.first().at(0); }

    bool follows(const QByteArray& line)
    {
        if (next_.isEmpty() || line != next_) return false;
        return place(line);
    }

    bool begins(const QByteArray& line)
    {
        for (qsizetype start = usedStarts_; start < starts_.size(); ++start) {
            if (starts_[start] != line) continue;
            usedStarts_ = start + 1;
            ++breaks;
            return place(line);
        }
        return false;
    }

    // Several may be cut off one after another, each at its beginning or further.
    bool isPartOfALine(QByteArray cut) const
    {
        const auto parts = cut.split(letter());
        for (const QByteArray& part : parts) {
            const QByteArray text = letter() + part;
            const auto holds = [&](const QByteArray& program) { return program.contains(text); };
            if (!part.isEmpty() && std::none_of(programs_.begin(), programs_.end(), holds)) return false;
        }
        return true;
    }

    bool place(const QByteArray& line)
    {
        for (const QByteArray& program : programs_) {
            const qsizetype at = program.indexOf(line);
            if (at < 0 || line.at(0) != letter()) continue;
            const qsizetype from = at + line.size();
            // After the last line a machine that repeats begins anew.
            next_ = from < program.size() ? program.mid(from, program.indexOf('\n', from) + 1 - from)
                                          : program.left(program.indexOf('\n') + 1);
            return true;
        }
        return false;
    }

    QList<QByteArray> programs_;
    QList<QByteArray> starts_;
    QByteArray wire_, next_;
    qsizetype seen_ = 0, at_ = 0, usedStarts_ = 0;
};
