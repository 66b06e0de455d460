// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

/// What of a received program belongs into a file that is saved by itself: the same bytes whenever the same program
/// comes, however the line cut it into pieces.
namespace ReceivedText
{
/// Without leader, tape codes (DC1 to DC4) and what follows the last line; of line ends in a row one is kept, as in the
/// editor.
QByteArray ofTape(const QByteArray& bytes);
/// As it came, without leader, tape codes and what fills the last block up.
QByteArray ofXModem(const QByteArray& bytes);
} // namespace ReceivedText
