// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryWords.h"

QString HistoryWords::direction(TransferEntry::Direction direction)
{
    return direction == TransferEntry::Direction::Sent ? QStringLiteral("Sent") : QStringLiteral("Received");
}

QString HistoryWords::outcome(TransferEntry::Outcome outcome)
{
    switch (outcome) {
    case TransferEntry::Outcome::Finished:
        return QStringLiteral("Finished");
    case TransferEntry::Outcome::Stopped:
        return QStringLiteral("Stopped");
    case TransferEntry::Outcome::Cancelled:
        return QStringLiteral("Cancelled by the control");
    case TransferEntry::Outcome::Unconfirmed:
        return QStringLiteral("End not confirmed");
    case TransferEntry::Outcome::PortLost:
        return QStringLiteral("Port lost");
    }
    return {};
}
