// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/ControlCodes.h"

#include "config/g.h"
#include "config/StringTools.h"

namespace
{
bool isDefault(const QString& notation)
{
    return notation.contains(QLatin1String("Default"));
}
} // namespace

QString ControlCodes::endOfBlock(const QString& notation)
{
    return isDefault(notation) ? QStringLiteral("\r\n") : g::getEOB(notation);
}

QString ControlCodes::startOrEnd(const QString& notation)
{
    if (isDefault(notation)) return {};
    QString characters;
    const auto pieces = notation.split(QLatin1Char(','));
    for (const QString& piece : pieces) {
        const auto code = StringTools::parseInteger(piece.trimmed());
        characters += code && *code >= 0 && *code <= 255 ? g::AsciiChar(*code) : piece;
    }
    return characters;
}
