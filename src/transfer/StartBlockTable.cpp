// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/StartBlockTable.h"

#include "program/StartMoves.h"
#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <QHeaderView>
#include <QSignalBlocker>

#include <algorithm>

namespace
{
QString inWords(StartBlock::Moves moves)
{
    switch (moves) {
    case StartBlock::Moves::Axes:
        return QStringLiteral("Moves axes");
    case StartBlock::Moves::Changer:
        return QStringLiteral("Changes the tool");
    case StartBlock::Moves::Nothing:
        break;
    }
    return {};
}
} // namespace

StartBlockTable::StartBlockTable(QWidget* parent) : QTableWidget(parent)
{
    setColumnCount(3);
    setHorizontalHeaderLabels({QStringLiteral("Block"), QStringLiteral("Moves"), QStringLiteral("From line")});
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(TextColumn, QHeaderView::Stretch);
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() * 5 / 3);
    setTabKeyNavigation(false); // Tab leaves the table
    setSelectionMode(QAbstractItemView::SingleSelection);
    connect(this, &QTableWidget::itemChanged, this, [this](const QTableWidgetItem* item) { takeTyped(*item); });
    connect(this, &QTableWidget::cellClicked, this, &StartBlockTable::showLineOf);
    connect(this, &QTableWidget::cellActivated, this, &StartBlockTable::showLineOf);
}

void StartBlockTable::setBlocks(const QList<StartBlock>& blocks)
{
    setRowCount(0);
    for (const auto& block : blocks)
        addRow(rowCount(), block);
    Q_EMIT blocksChanged();
}

QStringList StartBlockTable::blocks() const
{
    QStringList blocks;
    for (int row = 0; row < rowCount(); ++row) {
        const QString text = item(row, TextColumn)->text();
        if (!text.isEmpty()) blocks.append(text + u'\n');
    }
    return blocks;
}

void StartBlockTable::addRow(int row, const StartBlock& block)
{
    const QSignalBlocker quiet(this);
    insertRow(row);
    auto* text = new QTableWidgetItem(QString::fromUtf8(block.text));
    text->setFont(TextLook::fixedFont());
    setItem(row, TextColumn, text);
    QStringList lines;
    for (const auto line : block.lines)
        lines.append(QString::number(line));
    for (const int column : {MovesColumn, LineColumn}) {
        auto* cell = new QTableWidgetItem();
        cell->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        setItem(row, column, cell);
    }
    auto* line = item(row, LineColumn);
    line->setText(lines.isEmpty() ? QStringLiteral("none") : lines.join(QStringLiteral(", ")));
    if (!lines.isEmpty()) {
        line->setData(Qt::UserRole, block.lines.last());
        line->setToolTip(QStringLiteral("Show line %1 in the program").arg(block.lines.last()));
    }
    showMoves(row, block.moves, block.isSure);
}

void StartBlockTable::showMoves(int row, StartBlock::Moves moves, bool isSure)
{
    QStringList words;
    if (!isSure) words.append(QStringLiteral("Not sure"));
    if (moves != StartBlock::Moves::Nothing) words.append(inWords(moves));
    auto* cell = item(row, MovesColumn);
    cell->setText(words.join(QStringLiteral(", ")));
    cell->setIcon(words.isEmpty() ? QIcon() : Images::icon(QStringLiteral("warning")));
}

void StartBlockTable::takeTyped(const QTableWidgetItem& changed)
{
    if (changed.column() != TextColumn) return;
    const int row = changed.row();
    {
        const QSignalBlocker quiet(this);
        QString text = changed.text();
        text.removeIf([](QChar c) { return c < u' ' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator; });
        item(row, TextColumn)->setText(text);
        showMoves(row, movesOf(text.toUtf8()), true);
        auto* line = item(row, LineColumn);
        line->setText(QStringLiteral("typed in"));
        line->setData(Qt::UserRole, {});
        line->setToolTip({});
    }
    Q_EMIT blocksChanged();
}

void StartBlockTable::addBlock()
{
    const int row = currentRow() < 0 ? rowCount() : currentRow();
    addRow(row, {});
    setCurrentCell(row, TextColumn);
    editItem(item(row, TextColumn));
    Q_EMIT blocksChanged();
}

void StartBlockTable::removeBlock()
{
    if (currentRow() < 0) return;
    removeRow(currentRow());
    Q_EMIT blocksChanged();
}

void StartBlockTable::showLineOf(int row, int column)
{
    const qsizetype line = column == LineColumn ? item(row, LineColumn)->data(Qt::UserRole).toLongLong() : 0;
    if (line > 0) Q_EMIT lineWanted(line);
}
