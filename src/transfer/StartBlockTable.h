// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Restart.h"

#include <QStringList>
#include <QTableWidget>

/// The blocks that a start in the middle sends first, to be read, changed, added to and taken out. Shows what each may
/// move and which lines of the program say so. Part of a RestartPage.
class StartBlockTable : public QTableWidget
{
    Q_OBJECT
public:
    explicit StartBlockTable(QWidget* parent = nullptr);

    void setBlocks(const QList<StartBlock>& blocks);
    /// As shown, each closed by "\n"; without those left empty.
    QStringList blocks() const;
    /// A new one before the current one, to be typed in.
    void addBlock();
    void removeBlock();

Q_SIGNALS:
    /// The operator wants to see that line of the program.
    void lineWanted(qsizetype line);
    void blocksChanged();

private:
    enum Column { TextColumn, MovesColumn, LineColumn };

    void addRow(int row, const StartBlock& block);
    void showMoves(int row, StartBlock::Moves moves, bool isSure);
    void takeTyped(const QTableWidgetItem& item);
    void showLineOf(int row, int column);
};
