// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/SavedPrograms.h"
#include "ui_SavedPrograms.h"

#include "config/g.h"
#include "config/TransferWords.h"
#include "editor/CompareWindow.h"
#include "platform/ShowInFolder.h"
#include "transfer/LowWindow.h"
#include "transfer/ProgramFile.h"
#include "widgets/CompactRow.h"
#include "widgets/Images.h"
#include "widgets/Reasons.h"
#include "widgets/TextLook.h"

#include <QDateTime>
#include <QDesktopServices>
#include <QFileInfo>
#include <QHeaderView>
#include <QLocale>
#include <QResizeEvent>
#include <QStyledItemDelegate>
#include <QUrl>

#include <algorithm>

namespace
{
enum Column { Name, Outcome, Size, Time };
constexpr int shownRows = 3;
constexpr int warningSize = 20;     // pixels
constexpr int rowCharacters = 36;   // of the choice and its folder
constexpr int actionCharacters = 2; // beside the buttons
constexpr int listCharacters = 88;  // of a list with room for all columns

// Cells with some room between them.
class RoomyCells : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(2 * option.fontMetrics.averageCharWidth(), 2);
    }
};
} // namespace

void SavedPrograms::setUpLook()
{
    ui->btnSaveSettings->setIcon(Images::icon(QStringLiteral("setup")));
    ui->btnTryAgainSaving->setIcon(Images::icon(QStringLiteral("again")));
    ui->btnOpenSaved->setIcon(Images::icon(QStringLiteral("open")));
    ui->btnCompareSaved->setIcon(Images::icon(QStringLiteral("compare")));
    ui->btnShowSaved->setIcon(Images::icon(QStringLiteral("folder")));
    Images::showIn(*ui->imgNotSaved, QStringLiteral("warning"), warningSize);
    TextLook::dim(*ui->lblSaveFolder);
    CompactRow::ofTools(*ui->boxSave, rowCharacters);
    CompactRow::ofTools(*ui->boxNotSaved, rowCharacters);
    CompactRow::ofTools(*ui->boxSaved, actionCharacters);
    auto* header = ui->lstSaved->header();
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(Outcome, QHeaderView::Stretch);
    ui->lstSaved->setItemDelegate(new RoomyCells(ui->lstSaved));
    for (QWidget* later : std::initializer_list<QWidget*>{ui->lstSaved, ui->boxSaved, ui->boxNotSaved})
        later->hide();
}

// Some rows high, whatever the size of the text.
void SavedPrograms::fitList()
{
    const int most = isLowWindow(*window()) ? shownRows - 1 : shownRows;
    const int rows = std::clamp(ui->lstSaved->topLevelItemCount(), 1, most);
    const int rowHeight = ui->lstSaved->sizeHintForRow(0);
    ui->lstSaved->setFixedHeight(rows * rowHeight + 2 * ui->lstSaved->frameWidth());
    const bool isNarrow = width() < listCharacters * fontMetrics().averageCharWidth();
    ui->lstSaved->setColumnHidden(Size, isNarrow);
}

void SavedPrograms::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (ui->lstSaved->topLevelItemCount() > 0) fitList();
}

// The newest comes first.
void SavedPrograms::addRow(Program& program)
{
    const auto* newest = ui->lstSaved->topLevelItem(0);
    const bool followsNewest = ui->lstSaved->currentItem() == newest;
    program.row = new QTreeWidgetItem;
    program.row->setText(Time, QLocale().toString(QDateTime::currentDateTime().time(), QStringLiteral("HH:mm:ss")));
    ui->lstSaved->insertTopLevelItem(0, program.row);
    showRow(program);
    ui->lstSaved->show();
    ui->boxSaved->show();
    fitList();
    if (followsNewest) ui->lstSaved->setCurrentItem(program.row);
}

void SavedPrograms::showRow(const Program& program)
{
    const auto& answer = program.answer;
    QString text = QStringLiteral("Saving...");
    QString image = QStringLiteral("save");
    if (program.state == State::Failed) text = QStringLiteral("Not saved: %1").arg(answer.file.error);
    if (program.state == State::Same) text = QStringLiteral("Same as before");
    if (program.state == State::Saved) text = QStringLiteral("Saved");
    if (answer.file.kept > 0) text += QStringLiteral(", older kept as ~%1~").arg(answer.file.kept);
    if (program.isNotClosed) text += QStringLiteral(", not closed");
    if (program.state == State::Failed) image = QStringLiteral("warning");
    if (program.state == State::Saved || program.state == State::Same) image = QStringLiteral("state-done");
    program.row->setText(Name, program.order.name);
    program.row->setText(Outcome, text);
    program.row->setToolTip(Outcome, text);
    program.row->setIcon(Name, Images::icon(image));
    const bool isWritten = program.state == State::Saved || program.state == State::Same;
    if (!isWritten) return;
    program.row->setText(Size, TransferWords::count(answer.lines, "line") + QStringLiteral(", ") +
                                   TransferWords::count(answer.bytes, "byte"));
    program.row->setToolTip(Name, answer.file.path);
}

void SavedPrograms::showFailures()
{
    const auto isFailed = [](const auto& program) { return program->state == State::Failed; };
    const auto count = std::count_if(programs_.begin(), programs_.end(), isFailed);
    ui->boxNotSaved->setHidden(count == 0);
    if (count == 0) return;
    const auto last = std::find_if(programs_.rbegin(), programs_.rend(), isFailed);
    const QString& error = (*last)->answer.file.error;
    ui->lblNotSaved->setText(
        count == 1 ? QStringLiteral("%1 is not saved: %2").arg((*last)->order.name, error)
                   : QStringLiteral("%1 are not saved: %2").arg(TransferWords::count(count, "program"), error));
}

const SavedPrograms::Program* SavedPrograms::chosen() const
{
    const auto* row = ui->lstSaved->currentItem();
    const auto found =
        std::find_if(programs_.begin(), programs_.end(), [row](const auto& program) { return program->row == row; });
    return row && found != programs_.end() ? found->get() : nullptr;
}

void SavedPrograms::showActions()
{
    const auto* program = chosen();
    const bool isWritten = program && (program->state == State::Saved || program->state == State::Same);
    const QString notSaved = QStringLiteral("The program is not saved");
    Reasons::enable(*ui->btnOpenSaved, isWritten, notSaved);
    Reasons::enable(*ui->btnShowSaved, isWritten, notSaved);
    Reasons::enable(*ui->btnCompareSaved, isWritten && program->answer.file.kept > 0,
                    isWritten ? QStringLiteral("No older file of this name was replaced") : notSaved);
}

void SavedPrograms::open()
{
    if (ui->btnOpenSaved->isEnabled()) Q_EMIT openWanted(chosen()->answer.file.path);
}

void SavedPrograms::compare()
{
    const auto& file = chosen()->answer.file;
    const QString older = KeptFiles::keptPath(file.path, file.kept);
    const auto newBytes = ProgramFile::read(file.path), oldBytes = ProgramFile::read(older);
    if (!newBytes || !oldBytes) {
        g::msgBox(ProgramFile::unreadable(newBytes ? older : file.path), QStringLiteral("OK"), {});
        return;
    }
    (new CompareWindow({*newBytes, file.path}, {*oldBytes, older}, this))->show();
}

void SavedPrograms::showInFolder()
{
    const QString path = chosen()->answer.file.path;
    ShowInFolder::show(path,
                       [path] { QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath())); });
}
