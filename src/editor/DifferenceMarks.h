// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Comparison.h"

#include <Qsci/qsciscintilla.h>

#include <memory>

/// Marks the lines of an editor that differ from another program, by colour and by a sign in the margin: a bar where
/// both have something else, "+" where only this one has something, "-" where only the other one has. Only what is
/// about to be painted is marked, so that the number of differences makes no difference. Owned by the editor.
class DifferenceMarks : public QObject
{
    Q_OBJECT
public:
    DifferenceMarks(QsciScintilla* editor, Comparison::Side side);

    /// None while there is no comparison.
    void show(std::shared_ptr<const Comparison> comparison);
    /// The difference that the operator is at, by its index; -1 for none.
    void setCurrent(qsizetype index);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setColours();
    void markVisible();
    unsigned marksFor(qsizetype line) const;

    QsciScintilla* editor_;
    Comparison::Side side_;
    std::shared_ptr<const Comparison> comparison_;
    qsizetype current_ = -1;
};
