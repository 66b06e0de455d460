// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QMap>

/// A mill that runs programs of plain motion, written without the program's own reader: where its axes end up, in
/// nanometres of the machine, and what is in force.
class PlainMill
{
public:
    static constexpr QByteArrayView axes = "XYZB";

    QMap<char, qint64> place{{'X', 0}, {'Y', 0}, {'Z', 0}, {'B', 0}};
    QMap<QByteArray, int> modes;                                      // "motion", "plane", ... to the code's number
    QMap<char, QByteArray> words;                                     // F, S, D, H, T in the spindle, t prepared
    QMap<char, qint64> shift{{'X', 0}, {'Y', 0}, {'Z', 0}, {'B', 0}}; // of G52

    void run(const QByteArray& program)
    {
        for (QByteArray line : program.split('\n')) {
            while (line.contains('('))
                line.remove(line.indexOf('('), line.indexOf(')') - line.indexOf('(') + 1);
            runBlock(line.toUpper().replace(' ', ""));
        }
    }

private:
    using Word = std::pair<char, QByteArray>;

    static QList<Word> wordsOf(const QByteArray& line)
    {
        QList<Word> found;
        for (const char c : line) {
            if (c >= 'A' && c <= 'Z')
                found.append(Word(c, {}));
            else if (!found.isEmpty())
                found.last().second += c;
        }
        return found;
    }

    void runBlock(const QByteArray& line)
    {
        const auto block = wordsOf(line);
        bool shifts = false;
        bool changes = false;
        for (const auto& [letter, value] : block) {
            shifts = shifts || (letter == 'G' && value.toInt() == 52);
            changes = changes || (letter == 'M' && value.toInt() == 6);
            if (letter == 'G') setMode(value.toInt());
            if (letter == 'M') setFunction(value.toInt());
            if (QByteArrayView("FSDH").contains(letter)) words[letter] = value;
            if (letter == 'T') words['t'] = value;
        }
        if (changes) {
            words['T'] = words.take('t');
            modes["spindle"] = 5;
            place = {{'X', 11'000'000}, {'Y', 22'000'000}, {'Z', 333'000'000}, {'B', 0}};
        }
        for (const auto& [letter, value] : block) {
            if (!axes.contains(letter)) continue;
            if (shifts)
                shift[letter] = length(letter, value);
            else if (modes.value("distance", 90) == 91)
                place[letter] += length(letter, value);
            else
                place[letter] = zero(letter) + length(letter, value);
        }
    }

    qint64 length(char letter, const QByteArray& value) const
    {
        const qint64 step = letter != 'B' && modes.value("units", 21) == 20 ? 2540 : 100; // a ten-thousandth
        return qRound64(value.toDouble() * 10'000) * step;
    }
    qint64 zero(char letter) const
    {
        return (modes.value("offset", 54) - 54) * (letter == 'B' ? 7'000'000 : 50'000'000) + shift[letter];
    }

    void setMode(int code)
    {
        static const QMap<QByteArray, QList<int>> groups{{"motion", {0, 1, 2, 3}}, {"plane", {17, 18, 19}},
                                                         {"units", {20, 21}},      {"comp", {40, 41, 42}},
                                                         {"length", {43, 44, 49}}, {"offset", {54, 55, 56, 57, 58, 59}},
                                                         {"exact", {61, 64}},      {"distance", {90, 91}},
                                                         {"feed", {94, 95}},       {"level", {98, 99}}};
        for (auto group = groups.begin(); group != groups.end(); ++group) {
            if (group.value().contains(code)) modes[group.key()] = code;
        }
    }
    void setFunction(int code)
    {
        if (code >= 3 && code <= 5) modes["spindle"] = code;
        if (code == 7) modes["mist"] = 1;
        if (code == 8) modes["flood"] = 1;
        if (code == 9) modes["mist"] = modes["flood"] = 0;
    }
};
