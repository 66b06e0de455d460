// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/ProgramEditor.h"

#include <QTimer>

enum class SearchDirection { Forward, Backward };

/// Finds text in a program, ignoring case and wrapping around at its end. A long program is searched in slices between
/// events, so that a running transfer does not wait for it.
class ProgramSearch : public QObject
{
    Q_OBJECT
public:
    static constexpr qsizetype sliceSize = 1 << 20; // bytes; a few milliseconds

    explicit ProgramSearch(ProgramEditor* editor);

    /// Looks for the first match that starts at `from` or after it, or the last one that starts before it. Ends a
    /// search that is under way.
    void start(const QString& text, SearchDirection direction, qsizetype from);
    void cancel() { timer_.stop(); }

Q_SIGNALS:
    void found(ProgramEditor::Line match, bool wrapped);
    void notFound();

private:
    qsizetype searchSlice();
    qsizetype findForward(qsizetype from, qsizetype end) const;
    qsizetype findBackward(qsizetype from, qsizetype end) const;

    ProgramEditor* editor_;
    QTimer timer_;
    QByteArray pattern_;
    SearchDirection direction_ = SearchDirection::Forward;
    qsizetype next_ = 0;      // where the next slice starts, or ends when searching backward
    qsizetype remaining_ = 0; // positions not yet looked at
    bool wrapped_ = false;
};
