// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/Decimal.h"

#include <algorithm>
#include <array>

namespace
{
constexpr std::array<qint64, 10> powers{1,       10,        100,        1'000,       10'000,
                                        100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};
constexpr qint64 largest = 99'999'999'999'999'999; // 17 digits
constexpr int mostDecimals = 9;
constexpr qint64 largestWhole = largest / powers[mostDecimals];
} // namespace

std::optional<Decimal> Decimal::from(QByteArrayView text)
{
    const bool isNegative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text = text.sliced(1);
    qint64 digits = 0;
    int count = 0;
    qsizetype point = -1;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] == '.' && point < 0) {
            point = at;
        } else if (text[at] >= '0' && text[at] <= '9' && ++count <= longest) {
            digits = 10 * digits + (text[at] - '0');
        } else {
            return std::nullopt;
        }
    }
    const qsizetype decimals = point < 0 ? 0 : text.size() - point - 1;
    if (count == 0 || decimals > mostDecimals || digits / powers[static_cast<std::size_t>(decimals)] > largestWhole)
        return std::nullopt;
    return Decimal(isNegative ? -digits : digits, static_cast<int>(decimals), point >= 0);
}

bool Decimal::areMixed(const Decimal& one, const Decimal& other)
{
    return one.hasPoint_ != other.hasPoint_ && !one.isZero() && !other.isZero();
}

qint64 Decimal::digitsWith(int decimals) const
{
    return digits_ * powers[static_cast<std::size_t>(decimals - decimals_)];
}

std::optional<Decimal> Decimal::sum(const Decimal& one, const Decimal& other)
{
    if (areMixed(one, other)) return std::nullopt;
    const int decimals = std::max(one.decimals_, other.decimals_);
    const qint64 digits = one.digitsWith(decimals) + other.digitsWith(decimals);
    if (std::abs(digits) / powers[static_cast<std::size_t>(decimals)] > largestWhole) return std::nullopt;
    // The sum has the form of the one that is not zero.
    const bool hasPoint = one.isZero() ? other.hasPoint_ : one.hasPoint_;
    return Decimal(digits, decimals, hasPoint || decimals > 0);
}

std::optional<bool> Decimal::isGreater(const Decimal& one, const Decimal& other)
{
    if (areMixed(one, other)) return std::nullopt;
    const int decimals = std::max(one.decimals_, other.decimals_);
    return one.digitsWith(decimals) > other.digitsWith(decimals);
}

std::optional<Decimal> Decimal::times(qint64 factor) const
{
    constexpr qint64 most = 100'000;
    if (factor < 0 || factor > most || std::abs(digits_) > largest / most) return std::nullopt;
    const Decimal product(digits_ * factor, decimals_, hasPoint_);
    if (std::abs(product.digits_) / powers[static_cast<std::size_t>(decimals_)] > largestWhole) return std::nullopt;
    return product;
}

QByteArray Decimal::text() const
{
    QByteArray text = QByteArray::number(std::abs(digits_)).rightJustified(decimals_ + 1, '0');
    if (hasPoint_) text.insert(text.size() - decimals_, '.');
    return digits_ < 0 ? '-' + text : text;
}
