// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/MachineChoice.h"
#include "ui_MachineChoice.h"

#include "config/g.h"
#include "config/LineWords.h"
#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <QFileInfo>
#include <QPushButton>

#include <algorithm>

MachineChoice::MachineChoice(const QString& program, int active, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::MachineChoice>())
{
    ui->setupUi(this);
    const QFileInfo file(program);
    ui->lblQuestion->setText(QStringLiteral("Which machine is %1 for?").arg(file.fileName()));
    ui->lblFolder->setText(file.absolutePath());
    TextLook::enlarge(*ui->lblQuestion, 1.15);
    TextLook::dim(*ui->lblFolder);
    TextLook::lightenSelection(*ui->lstMachines);
    int proposed = std::max(active, 1);
    for (qsizetype index = g::mcIcons.size() - 1; index >= 1; --index)
        if (g::mcIcons[index]->recentPrograms.contains(program)) proposed = static_cast<int>(index);
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index) {
        const auto& machine = *g::mcIcons[index];
        const QString port = LineWords::portName(machine.MCPORT);
        const QString text = port.isEmpty() ? machine.MCNAME : QStringLiteral("%1 on %2").arg(machine.MCNAME, port);
        ui->lstMachines->addItem(new QListWidgetItem(Images::icon(QStringLiteral("machine")), text));
    }
    ui->lstMachines->setCurrentRow(proposed - 1);
    ui->buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("Open"));
    for (auto* button : ui->buttons->buttons())
        button->setIcon({}); // a style's own pictures do not go with ours
    connect(ui->lstMachines, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    connect(ui->buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    ui->lstMachines->setFocus();
}

MachineChoice::~MachineChoice() = default;

int MachineChoice::machine() const
{
    return ui->lstMachines->currentRow() + 1;
}
