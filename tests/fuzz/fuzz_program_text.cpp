// SPDX-License-Identifier: GPL-3.0-or-later
// Whatever a program file holds, in pieces of any size it opens as plain replacement would have it. From a line only
// what the machine's settings ask for is taken out, and what must not reach the control does not.
#include "editor/FileText.h"
#include "fuzz/Fuzz.h"
#include "protocol/LineEnds.h"
#include "protocol/LineFilter.h"

#include <QRegularExpression>

#include <array>

namespace
{
constexpr std::array types{ControlType::General, ControlType::Fanuc, ControlType::Okuma};

void openFile(const QByteArray& file, int pieceSize)
{
    FileText fileText;
    QByteArray text;
    for (qsizetype at = 0; at < file.size(); at += pieceSize)
        text += fileText.convert(file.constData() + at, std::min<qsizetype>(pieceSize, file.size() - at));
    PROMISE(QString::fromUtf8(text) == QString::fromLatin1(file).replace(u'\r', u'\n').replace("\n\n", "\n"));
    const QString collapsed = QString::fromLatin1(file).replace("\n\n", "\n").replace("\r\r", "\r");
    PROMISE(LineEnds::collapseDoubled(file) == collapsed.toLatin1());
}

// `kept` is `whole` with characters taken out, the others in order.
bool isTakenFrom(const QString& kept, const QString& whole)
{
    qsizetype at = 0;
    return std::all_of(kept.begin(), kept.end(), [&](QChar c) { return (at = whole.indexOf(c, at) + 1) > 0; });
}

void filterLine(const QString& body, int choice)
{
    const LineFilter filter{types[static_cast<std::size_t>(choice) % types.size()], (choice & 64) != 0,
                            (choice & 128) != 0};
    const QString end = (choice & 32) != 0 ? "\n" : "";
    const bool isFanuc = filter.type == ControlType::Fanuc, isOkuma = filter.type == ControlType::Okuma;
    const auto sent = filter.lineToSend(body + end);
    if (!sent) {
        PROMISE(filter.stripEmptyLines || (isFanuc && body.contains(u'%')));
        return;
    }
    PROMISE(sent->endsWith(u'\n') == !end.isEmpty());
    const QString kept = sent->chopped(end.size());
    const auto has = [&kept](const char* pattern) { return kept.contains(QRegularExpression(pattern)); };
    PROMISE(isTakenFrom(kept, body));
    PROMISE(isFanuc || isOkuma || filter.stripComments || kept == body);
    PROMISE(!isFanuc || !has("%"));
    PROMISE(!isOkuma || !has("[\\x00\\x12\\x14]"));
    PROMISE(!filter.stripComments || !has("[(;]|[ \t]\\z"));
    PROMISE(!filter.stripEmptyLines || has("[^ \t]"));
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray input = Fuzz::bytes(data, size);
    const int choice = Fuzz::takeChoice(input);
    openFile(input, choice + 1);
    filterLine(QString::fromLatin1(input).remove(u'\n'), choice);
    return 0;
}
