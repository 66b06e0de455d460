// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QWidget;

/// The pages that are installed with the program and shown in the browser.
namespace UserGuide
{
inline constexpr char guide[] = "index.html";
inline constexpr char licence[] = "gpl.html";

/// Opens the page. Tells the operator if it is not installed or if there is no browser.
void open(QWidget* parent, const QString& page = QString::fromLatin1(guide));
} // namespace UserGuide
