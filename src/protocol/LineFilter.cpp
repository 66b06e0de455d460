// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/LineFilter.h"

#include <algorithm>

namespace
{
bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

bool isBlank(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return isBlank(c); });
}

// Without "( ... )" groups and what follows ";" or an open "(", then without the blanks that this leaves at the end.
QString withoutComments(const QString& body)
{
    QString kept;
    for (qsizetype at = 0; at < body.size() && body[at] != u';'; ++at) {
        if (body[at] != u'(') {
            kept += body[at];
            continue;
        }
        at = body.indexOf(u')', at);
        if (at < 0) break;
    }
    while (!kept.isEmpty() && isBlank(kept.back()))
        kept.chop(1);
    return kept;
}

bool steersTapeReader(QChar c)
{
    return c == u'\0' || c == QLatin1Char(Framing::tapeStart) || c == QLatin1Char(Framing::tapeStop);
}
} // namespace

std::optional<QString> LineFilter::lineToSend(const QString& line) const
{
    const bool hasEnd = line.endsWith(u'\n');
    QString body = hasEnd ? line.chopped(1) : line;
    const bool wasPercentLine = type == ControlType::Fanuc && body.contains(u'%');

    // Header and trailer carry the percent signs: one in the body would end the program early.
    if (wasPercentLine) body.remove(u'%');
    // The program text must not start or stop the tape reader by itself.
    if (type == ControlType::Okuma) body.removeIf(steersTapeReader);
    if (stripComments) body = withoutComments(body);

    if ((wasPercentLine || stripEmptyLines) && isBlank(body)) return std::nullopt;
    return hasEnd ? body + u'\n' : body;
}
