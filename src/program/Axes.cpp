// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/Axes.h"

using Status = AxisPosition::Status;

void Axes::setTo(int axis, QByteArrayView number, qsizetype line)
{
    Axis& moved = axes_[static_cast<std::size_t>(axis)];
    moved.position.status = Status::Known;
    moved.position.text.truncate(0); // keeps its memory
    moved.position.text.append(number);
    moved.position.isSum = false;
    moved.position.line = line;
    moved.position.cause.clear();
    moved.sum.reset();
}

void Axes::moveBy(int axis, QByteArrayView number, qsizetype times, qsizetype line)
{
    Axis& moved = axes_[static_cast<std::size_t>(axis)];
    const auto step = Decimal::from(number);
    const auto way = step ? step->times(times) : std::nullopt;
    if (way && way->isZero()) return;
    if (moved.position.status != Status::Known) return lose(axis, number, line);
    const auto from = moved.sum ? moved.sum : Decimal::from(moved.position.text);
    const auto sum = from && way ? Decimal::sum(*from, *way) : std::nullopt;
    if (!sum) return lose(axis, number, line);
    moved.sum = sum;
    moved.position.isSum = true;
    moved.position.line = line;
}

void Axes::leave(int axis, Status status, QByteArrayView cause, qsizetype line)
{
    Axis& left = axes_[static_cast<std::size_t>(axis)];
    left.position = {status, {}, false, line, cause.toByteArray()};
    left.sum.reset();
}

void Axes::lose(int axis, QByteArrayView cause, qsizetype line)
{
    // What is lost already keeps its first reason.
    if (axes_[static_cast<std::size_t>(axis)].position.status != Status::Unknown)
        leave(axis, Status::Unknown, cause, line);
}

void Axes::loseAll(QByteArrayView cause, qsizetype line)
{
    for (int axis = 0; axis < count; ++axis) {
        if (axes_[static_cast<std::size_t>(axis)].position.status != Status::Unsaid) lose(axis, cause, line);
    }
}

void Axes::toReference(int axis, QByteArrayView cause, qsizetype line)
{
    leave(axis, Status::AtReference, cause, line);
}

AxisPosition Axes::at(int axis) const
{
    const Axis& asked = axes_[static_cast<std::size_t>(axis)];
    AxisPosition position = asked.position;
    if (asked.sum) position.text = asked.sum->text();
    return position;
}
