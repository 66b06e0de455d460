// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QWidget;

namespace MessageBox
{
/// A modal message over `parent`. True exactly when the first button was chosen; without a second label there is one
/// button. With two, Enter chooses the second: a slip must not delete or send anything. Carriage returns in the text
/// show as line breaks.
bool ask(QWidget* parent, const QString& text, const QString& firstButton, const QString& secondButton);
} // namespace MessageBox
