// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

/// A number of a program, exactly as written: "10" and "10." differ, because a control may count "10" in its smallest
/// steps.
class Decimal
{
public:
    /// Nothing if the text is no plain number, or one too long to count with.
    static std::optional<Decimal> from(QByteArrayView text);
    /// Nothing when only one of the two has a point, so that their units may differ, or when it does not fit. A zero
    /// is a zero in either form.
    static std::optional<Decimal> sum(const Decimal& one, const Decimal& other);
    /// Nothing when the two can't be compared, for the same reasons.
    static std::optional<bool> isGreater(const Decimal& one, const Decimal& other);

    std::optional<Decimal> times(qint64 factor) const; ///< nothing when it does not fit
    bool isZero() const { return digits_ == 0; }
    QByteArray text() const;

private:
    Decimal(qint64 digits, int decimals, bool hasPoint) : digits_(digits), decimals_(decimals), hasPoint_(hasPoint) {}
    static bool areMixed(const Decimal& one, const Decimal& other);
    qint64 digitsWith(int decimals) const;

    static constexpr int longest = 17; // digits; the sum of two such numbers fits

    qint64 digits_; // all digits as one number
    int decimals_;  // how many of them stand after the point
    bool hasPoint_;
};
