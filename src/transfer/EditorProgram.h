// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/ProgramEditor.h"
#include "protocol/ProgramText.h"

/// The program in an editor, as a send reads it. Positions are the editor's: bytes of its text.
class EditorProgram : public ProgramText
{
public:
    explicit EditorProgram(const ProgramEditor& editor) : editor_(editor) {}

    qsizetype size() const override { return editor_.textSize(); }
    Line lineAt(qsizetype position) const override
    {
        const auto line = editor_.lineAt(position);
        return {line.start, line.end};
    }
    QString lineText(Line line) const override { return editor_.lineText({line.start, line.end}); }

private:
    const ProgramEditor& editor_;
};
