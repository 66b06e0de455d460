// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/EditorColours.h"

#include <QObject>

class QsciScintilla;

/// Colours the program in an editor. Only what is about to be painted is looked at, so that the length of the program
/// makes no difference; only the first part of a very long line is shown. Owned by the editor.
class GCodeColouring : public QObject
{
    Q_OBJECT
public:
    // Bytes of a line: more would stall the window at each paint.
    static constexpr qsizetype longestShown = 4000;     ///< the rest of the line is hidden
    static constexpr qsizetype longestHidden = 500'000; ///< a program with a longer line can't be shown

    explicit GCodeColouring(QsciScintilla* editor);

    void setColours(const EditorColours& colours);
    /// Before each paint: makes the editor ask for the styles of what it paints.
    void beforePaint();
    /// After each change of the text, before anything is laid out.
    void hideLongTails();
    /// Length of a line that keeps the program from being shown, in bytes; 0 if it can be shown.
    qsizetype unshownLine() const { return unshownLine_; }

private:
    void styleUpTo(qsizetype end);
    void styleLine(qsizetype number);
    qsizetype shownEnd(qsizetype start, qsizetype length) const;
    void hideTail(qsizetype line, qsizetype length);
    qsizetype scintilla(unsigned message, qsizetype first = 0, qsizetype second = 0) const;

    QsciScintilla* editor_;
    QByteArray styles_;
    qsizetype unshownLine_ = 0;
    bool noted_ = false; // a line has a note below it about its hidden tail
};
