// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// The bytes that a machine's settings amount to, in an operator's words.
namespace LineSummary
{
/// "% CR LF (25 0D 0A)"; runs of one byte are counted, a long text is cut. Empty for no bytes.
QString describe(const QByteArray& bytes);
} // namespace LineSummary
