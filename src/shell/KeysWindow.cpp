// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/KeysWindow.h"
#include "ui_KeysWindow.h"

#include <QFile>
#include <QScreen>

#include <utility>

// At file scope: the macro declares a function in the global namespace.
static void loadGuide()
{
    Q_INIT_RESOURCE(guide);
}

namespace
{
using Row = std::pair<QString, QString>; // keys, what they do

// The rows of the table in the guide's chapter, without its head.
QList<Row> rowsOfGuide()
{
    loadGuide();
    QFile guide(QStringLiteral(":/user-guide.md"));
    if (!guide.open(QIODevice::ReadOnly)) qFatal("the list of keys is missing");
    const QString text = QString::fromUtf8(guide.readAll());
    const auto chapter = text.indexOf(QLatin1String("\n## Keys\n"));
    QList<Row> rows;
    for (const auto& line : text.mid(chapter).split(QLatin1Char('\n'))) {
        const auto cells = line.split(QLatin1Char('|'));
        if (cells.size() == 4) rows.append({cells[1].trimmed(), cells[2].trimmed()});
    }
    return rows.mid(2);
}
} // namespace

KeysWindow::KeysWindow(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::KeysWindow>())
{
    ui->setupUi(this);
    const int rowHeight = fontMetrics().height() * 8 / 5;
    for (const auto& [keys, does] : rowsOfGuide())
        (new QTreeWidgetItem(ui->lstKeys, {keys, does}))
            ->setSizeHint(0, {fontMetrics().horizontalAdvance(keys) + 2 * rowHeight, rowHeight});
    ui->lstKeys->resizeColumnToContents(0);
    ui->lstKeys->resizeColumnToContents(1);
    const auto width = ui->lstKeys->columnWidth(0) + ui->lstKeys->columnWidth(1);
    const auto rows = ui->lstKeys->topLevelItemCount() + 5; // with the head, the button and the margins
    const QSize whole(width + fontMetrics().averageCharWidth() * 12, rows * rowHeight);
    resize(whole.boundedTo(screen()->availableSize() - QSize(24, 64))); // with the frame; the rest scrolls
    connect(ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

KeysWindow::~KeysWindow() = default;
