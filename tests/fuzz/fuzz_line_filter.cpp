// SPDX-License-Identifier: GPL-3.0-or-later
// Whatever a line holds: only what the machine asks for is taken out, and what must not reach the control does not.
#include "fuzz/Fuzz.h"
#include "transfer/LineFilter.h"

#include <array>

namespace
{
constexpr std::array types{ControlType::General, ControlType::Fanuc, ControlType::Okuma};

bool endsInBlank(const QString& body)
{
    return body.endsWith(u' ') || body.endsWith(u'\t');
}

// `kept` is `whole` with characters taken out, the others in their order.
bool isTakenFrom(const QString& kept, const QString& whole)
{
    qsizetype at = 0;
    for (const QChar c : kept) {
        at = whole.indexOf(c, at) + 1;
        if (at == 0) return false;
    }
    return true;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray input = Fuzz::bytes(data, size);
    const int choice = Fuzz::takeChoice(input);
    const LineFilter filter{types[static_cast<std::size_t>(choice) % types.size()], (choice & 64) != 0,
                            (choice & 128) != 0};
    const bool hasEnd = (choice & 32) != 0;
    const QString body = QString::fromLatin1(input.replace('\n', ""));
    const auto sent = filter.lineToSend(hasEnd ? body + u'\n' : body);
    const bool changesNothing = filter.type == ControlType::General && !filter.stripComments && !filter.stripEmptyLines;
    if (!sent) {
        PROMISE(filter.stripEmptyLines || (filter.type == ControlType::Fanuc && body.contains(u'%')));
        return 0;
    }
    PROMISE(sent->endsWith(u'\n') == hasEnd);
    const QString kept = hasEnd ? sent->chopped(1) : *sent;
    PROMISE(!changesNothing || kept == body);
    PROMISE(isTakenFrom(kept, body));
    if (filter.type == ControlType::Fanuc) PROMISE(!kept.contains(u'%'));
    if (filter.type == ControlType::Okuma)
        PROMISE(!kept.contains(u'\0') && !kept.contains(QChar(18)) && !kept.contains(QChar(20)));
    if (filter.stripComments) PROMISE(!kept.contains(u'(') && !kept.contains(u';') && !endsInBlank(kept));
    if (filter.stripEmptyLines) PROMISE(!kept.trimmed().isEmpty() || !isTakenFrom(kept, QStringLiteral(" \t")));
    return 0;
}
