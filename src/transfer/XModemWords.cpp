// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/XModemWords.h"

#include "config/TransferWords.h"

namespace
{
constexpr int longSilence = 60; // s; a control may work on a block for some time, but not that long

qsizetype blocks(qsizetype bytes)
{
    return (bytes + XModemBlock::dataSize - 1) / XModemBlock::dataSize;
}

QString otherNumbers(const XModemSend& send)
{
    const bool isFrom1 = send.numbers() == XModemBlock::Numbers::From1;
    return QStringLiteral("The block numbers start over here. In Setup, try Block numbers \"%1\".")
        .arg(isFrom1 ? QStringLiteral("0-255 (standard)") : QStringLiteral("1-255 (as before)"));
}
} // namespace

QString XModemWords::waiting(const XModemSend& send)
{
    if (send.state() == XModemSend::State::End) {
        return send.endRepeats() == 0 ? QString()
                                      : QStringLiteral("All blocks are sent. The control has not confirmed the end; "
                                                       "it has been told again %1.")
                                            .arg(TransferWords::count(send.endRepeats(), "time"));
    }
    if (send.silence() < longSilence) return {};
    const QString silent = QStringLiteral("No answer from the control for %1. Still waiting; Stop ends the transfer.")
                               .arg(TransferWords::ago(send.silence() * 1000));
    return send.isAtWrap() ? silent + u'\n' + otherNumbers(send) : silent;
}

QString XModemWords::cancelled(const XModemSend& send)
{
    const QString sent =
        QStringLiteral("%1 of %2 blocks sent").arg(blocks(send.sent())).arg(blocks(send.program().size()));
    return send.isAtWrap() ? sent + u'\n' + otherNumbers(send) : sent;
}

QString XModemWords::unconfirmed()
{
    return QStringLiteral("The control took every block. See there whether the program is complete.");
}
