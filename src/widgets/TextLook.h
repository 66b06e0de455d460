// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

/// How headings and side notes differ from other text, on every theme and with every text size.
namespace TextLook
{
/// Bold and larger than the user's own size by that factor.
void enlarge(QWidget& widget, double factor);

/// Text that steps back behind the rest and is still easy to read; follows a change of theme. Themes' own colours for
/// placeholders are of no use here: some are as dark as a dark background.
void dim(QWidget& widget);
} // namespace TextLook
