// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/TransferWords.h"

#include <QLocale>

#include <cmath>

namespace
{
constexpr qint64 second = 1000; // ms
constexpr qint64 minute = 60 * second;
constexpr qint64 hour = 60 * minute;

QString hoursAndMinutes(qint64 minutes)
{
    const QString hours = QStringLiteral("%1 h").arg(minutes / 60);
    return minutes % 60 == 0 ? hours : hours + QStringLiteral(" %1 min").arg(minutes % 60);
}
} // namespace

QString TransferWords::number(qint64 value)
{
    return QLocale(QLocale::English).toString(value);
}

QString TransferWords::count(qint64 value, const char* singular)
{
    return number(value) + u' ' + QString::fromLatin1(singular) + (value == 1 ? QString() : QStringLiteral("s"));
}

QString TransferWords::clockTime(qint64 ms)
{
    const qint64 seconds = ms / second;
    const QString tail = QStringLiteral(":%1").arg(seconds % 60, 2, 10, QLatin1Char('0'));
    if (ms < hour) return QString::number(seconds / 60) + tail;
    return QStringLiteral("%1:%2").arg(seconds / 3600).arg(seconds / 60 % 60, 2, 10, QLatin1Char('0')) + tail;
}

QString TransferWords::about(double ms)
{
    const auto rounded = [ms](qint64 step) { return std::llround(std::ceil(ms / static_cast<double>(step))); };
    if (ms < 5 * second) return QStringLiteral("a few seconds");
    if (const auto tens = rounded(10 * second); tens < 6) return QStringLiteral("about %1 s").arg(tens * 10);
    if (const auto minutes = rounded(minute); minutes < 60) return QStringLiteral("about %1 min").arg(minutes);
    return QStringLiteral("about ") + hoursAndMinutes(rounded(5 * minute) * 5);
}

QString TransferWords::ago(qint64 ms)
{
    if (ms < minute) return QStringLiteral("%1 s").arg(ms / second);
    if (ms < hour) return QStringLiteral("%1 min").arg(ms / minute);
    return hoursAndMinutes(ms / minute);
}
