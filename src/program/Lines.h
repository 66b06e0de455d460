// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>

/// Goes through a text line by line, without copying. LF, CR LF and a lone CR end a line, as in the editor, so that
/// line numbers are the same. Behind the line end that closes a text comes no further line.
class Lines
{
public:
    explicit Lines(QByteArrayView text) : at_(text.data()), end_(text.data() + text.size()) {}

    bool atEnd() const { return at_ == end_; }

    /// The next line, without its end. Not to be called at the end.
    QByteArrayView next()
    {
        const char* const begin = at_;
        while (at_ != end_ && *at_ != '\n' && *at_ != '\r')
            ++at_;
        const QByteArrayView line(begin, at_ - begin);
        if (at_ != end_ && *at_++ == '\r' && at_ != end_ && *at_ == '\n') ++at_;
        return line;
    }

private:
    const char* at_;
    const char* end_;
};
