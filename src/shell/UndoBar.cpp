// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/UndoBar.h"
#include "ui_UndoBar.h"

#include "widgets/Images.h"

UndoBar::UndoBar(QWidget* parent) : QFrame(parent), ui(std::make_unique<Ui::UndoBar>())
{
    ui->setupUi(this);
    ui->btnDismiss->setIcon(Images::icon(QStringLiteral("close")));
    connect(ui->btnUndo, &QPushButton::clicked, this, &UndoBar::undoWanted);
    connect(ui->btnDismiss, &QToolButton::clicked, this, &UndoBar::dismissed);
    hide();
}

UndoBar::~UndoBar() = default;

void UndoBar::offer(const QString& machine)
{
    ui->lblDeleted->setText(QStringLiteral("Deleted %1").arg(machine));
    ui->btnUndo->setAccessibleName(QStringLiteral("Bring %1 back").arg(machine));
    show();
}
