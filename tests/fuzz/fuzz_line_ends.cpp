// SPDX-License-Identifier: GPL-3.0-or-later
// A program file opens the same however it is read in pieces, and as plain replacement would have it.
#include "fuzz/Fuzz.h"
#include "transfer/LineEnds.h"

#include <QString>

#include <algorithm>

namespace
{
QByteArray inPieces(const QByteArray& file, int pieceSize)
{
    LineEnds::FileToText fileToText;
    QByteArray text;
    for (qsizetype at = 0; at < file.size(); at += pieceSize)
        text += fileToText.convert(file.constData() + at, std::min<qsizetype>(pieceSize, file.size() - at));
    return text;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray file = Fuzz::bytes(data, size);
    const int pieceSize = Fuzz::takeChoice(file) + 1;
    QString expected = QString::fromLatin1(file);
    expected.replace(u'\r', u'\n').replace(QStringLiteral("\n\n"), QStringLiteral("\n"));
    PROMISE(inPieces(file, pieceSize) == expected.toUtf8());

    QString collapsed = QString::fromLatin1(file);
    collapsed.replace(QStringLiteral("\n\n"), QStringLiteral("\n"))
        .replace(QStringLiteral("\r\r"), QStringLiteral("\r"));
    PROMISE(LineEnds::collapseDoubled(file) == collapsed.toLatin1());
    return 0;
}
