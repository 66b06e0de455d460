// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

/// The program's own images, drawn from SVG so that they are sharp at every scale. Main thread.
namespace Images
{
/// The image of that name, without folder or ending. What is black in it takes the theme's text colour when painted, so
/// that line icons are clear on light and dark. An unknown name is a programming error and gives an empty icon.
QIcon icon(const QString& name);
} // namespace Images
