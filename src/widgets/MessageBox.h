// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace MessageBox
{
/// A modal message over `parent`. True exactly when the first button was chosen; without a second label there is one
/// button. With two, Enter chooses the second: a slip must not delete or send anything. Carriage returns in the text
/// show as line breaks.
bool ask(QWidget* parent, const QString& text, const QString& firstButton, const QString& secondButton);
/// A message over `parent` that waits for nobody: all windows go on, and it stays until it is read.
void tell(QWidget* parent, const QString& text);

struct Question {
    QString heading;     ///< what it is about
    QString detail;      ///< what follows
    QStringList answers; ///< the last one leaves everything as it is
    qsizetype last() const { return answers.size() - 1; }
};
/// Asks over `parent`, modally, and returns the index of the answer chosen. Enter and Escape choose the last one.
qsizetype choose(QWidget* parent, const Question& question);
} // namespace MessageBox
