// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "protocol/ProgramText.h"

#include <QString>

/// A program for tests, held in one text; positions count its characters.
class ProgramLines : public ProgramText
{
public:
    explicit ProgramLines(const QByteArray& bytes) : text_(QString::fromLatin1(bytes)) {}

    qsizetype size() const override { return text_.size(); }
    Line lineAt(qsizetype position) const override
    {
        const qsizetype start = position == 0 ? 0 : text_.lastIndexOf(u'\n', position - 1) + 1;
        const qsizetype end = text_.indexOf(u'\n', start) + 1;
        return {start, end == 0 ? text_.size() : end};
    }
    QString lineText(Line line) const override { return text_.mid(line.start, line.end - line.start); }

private:
    QString text_;
};
