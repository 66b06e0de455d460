// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

/// Turns a program file's bytes into the editor's text piece by piece. Every byte is one Latin-1 character; the result
/// is UTF-8. CR becomes LF, then each pair of LFs becomes one, in one pass from the left: CR LF, CR and LF all
/// become LF, and a blank line between two lines is dropped on purpose.
class FileText
{
public:
    QByteArray convert(const char* bytes, qsizetype count);

private:
    bool lineFeedBefore_ = false; // an LF that may still be the first of a pair
};
