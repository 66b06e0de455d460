// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

class QLabel;

/// The program's own images, drawn from SVG so that they are sharp at every scale. Main thread.
namespace Images
{
/// The image of that name, without folder or ending. What is black in it takes the theme's text colour when painted and
/// what is middle grey (#808080) its dimmed text colour, so that line icons are clear on light and dark themes. An
/// unknown name is a programming error and gives an empty icon.
QIcon icon(const QString& name);

/// The program's icon for windows, in the sizes that window managers ask for.
QIcon applicationIcon();

/// Shows an image in a label, `size` pixels high and wide or larger beside large text, and repaints it whenever the
/// theme, the font or the scale changes. A label of a fixed size gets that of the image. May be called again with
/// another image.
void showIn(QLabel& label, const QString& name, int size);
} // namespace Images
