// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>

class QWidget;

/// How headings, side notes and pictures stand beside other text, on every theme and with every text size.
namespace TextLook
{
/// A length in pixels that suits text of the usual size, made larger where the widget's text is.
int scaled(const QWidget& widget, int pixels);

/// Bold and larger than the user's own size by that factor.
void enlarge(QWidget& widget, double factor);

/// Less prominent than the rest and still easy to read; follows a change of theme. Themes' own placeholder colours
/// will not do: some are as dark as a dark background.
void dim(QWidget& widget);

/// The chosen row of a list lies on a light ground, so that its pictures can still be seen; follows a change of theme.
void lightenSelection(QWidget& list);

/// For text of programs; no smaller than other text.
QFont fixedFont();
} // namespace TextLook
