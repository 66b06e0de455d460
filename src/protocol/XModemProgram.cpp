// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/XModemProgram.h"

#include "config/g.h"

QByteArray XModemProgram::begin(const ProgramText& text, const LineFilter& filter, const QString& endOfBlock)
{
    *this = {};
    filter_ = filter;
    endOfBlock_ = endOfBlock;
    QByteArray bytes;
    bytes.reserve(text.size() + text.size() / 16);
    for (ProgramText::Line line; line.end < text.size();) {
        line = text.lineAt(line.end);
        bytes += lineBytes(text, line);
    }
    return bytes;
}

ProgramText::Line XModemProgram::follow(const ProgramText& text, qsizetype sent)
{
    while (lineEndSent_ < sent && line_.end < text.size()) {
        line_ = text.lineAt(line_.end);
        lineEndSent_ += lineBytes(text, line_).size();
    }
    return line_;
}

QByteArray XModemProgram::lineBytes(const ProgramText& text, ProgramText::Line line) const
{
    auto filtered = filter_.lineToSend(text.lineText(line));
    return filtered ? g::getBytes(filtered->replace(u'\n', endOfBlock_)) : QByteArray();
}
