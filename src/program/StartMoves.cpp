// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/StartMoves.h"

#include "program/Block.h"

#include <algorithm>
#include <array>

using Moves = StartBlock::Moves;

namespace
{
// Codes that move without a position beside them: arcs by I, J and K, reference points, tool lengths.
constexpr std::array movingCodes{20, 30, 280, 300, 430, 434, 435, 440, 530, 560};

bool movesAxes(const Block::Word& word)
{
    if (Axes::indexOf(word.letter) >= 0) return true;
    if (word.letter != 'G') return false;
    return word.form == Block::Form::Expression ||
           std::find(movingCodes.begin(), movingCodes.end(), Codes::number(word.number)) != movingCodes.end();
}
} // namespace

Moves movesOf(QByteArrayView text)
{
    Block block;
    block.read(text);
    const auto& words = block.words();
    // A call or a name may stand for anything.
    if (!block.names().isEmpty() || std::any_of(words.begin(), words.end(), movesAxes)) return Moves::Axes;
    const bool changes = std::any_of(words.begin(), words.end(), [](const Block::Word& word) {
        return word.letter == 'T' || (word.letter == 'M' && Codes::number(word.number) == 60);
    });
    return changes ? Moves::Changer : Moves::Nothing;
}
