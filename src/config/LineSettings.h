// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

/// What the machine record's integers for the serial line stand for. The values are those of stored settings.
enum class FlowControl { None, XonXoff, RtsCts, XModem };
enum class DataFormat { EightBits, SevenBits, SevenBitsEven };

/// The flow control that MCFLOW stands for. Stored settings may hold one value too many; a value without a meaning is
/// None.
constexpr FlowControl flowControl(qint64 stored)
{
    const bool hasMeaning = stored >= 0 && stored <= static_cast<qint64>(FlowControl::XModem);
    return hasMeaning ? static_cast<FlowControl>(stored) : FlowControl::None;
}

/// The data bits and parity that MCDBPAR stands for. A value without a meaning is EightBits.
constexpr DataFormat dataFormat(qint64 stored)
{
    const bool hasMeaning = stored >= 0 && stored <= static_cast<qint64>(DataFormat::SevenBitsEven);
    return hasMeaning ? static_cast<DataFormat>(stored) : DataFormat::EightBits;
}
