// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryPage.h"
#include "ui_HistoryPage.h"

#include "config/TransferWords.h"
#include "history/History.h"
#include "history/HistoryWords.h"
#include "widgets/CompactRow.h"
#include "widgets/FileDialogs.h"
#include "widgets/Images.h"
#include "widgets/MessageBox.h"
#include "widgets/TextLook.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>

namespace
{
constexpr int typingPause = 150; // ms
constexpr int reloadPause = 300; // ms; many machines may end at once
constexpr int mostCounted = 100'000;
constexpr int emptyImage = 96;
constexpr QSize frameAllowance(24, 48); // pixels of the screen that a window's frame may need
} // namespace

HistoryPage::HistoryPage(History& history, QWidget* parent)
    : QWidget(parent, Qt::Window), history_(history), ui(std::make_unique<Ui::HistoryPage>()), model_(history)
{
    ui->setupUi(this);
    TextLook::enlarge(*ui->lblHeading, 1.25);
    TextLook::dim(*ui->lblCount);
    TextLook::enlarge(*ui->lblEmpty, 1.15);
    Images::showIn(*ui->imgEmpty, QStringLiteral("history"), emptyImage);
    ui->btnOpenAgain->setIcon(Images::icon(QStringLiteral("open")));
    ui->btnExport->setIcon(Images::icon(QStringLiteral("save")));
    ui->btnClearFilter->setIcon(Images::icon(QStringLiteral("close")));
    setUpTable();
    TextLook::lightenSelection(*ui->tblHistory); // its pictures have to be seen
    setUpFilter();
    setUpKept();
    connect(ui->btnOpenAgain, &QPushButton::clicked, this, &HistoryPage::openChosen);
    connect(ui->btnExport, &QPushButton::clicked, this, &HistoryPage::exportAll);
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this), &QShortcut::activated, this, &QWidget::close);
    tmrReload_.setSingleShot(true);
    connect(&tmrReload_, &QTimer::timeout, this, &HistoryPage::reload);
    connect(&history_, &History::changed, this, [this] {
        if (!tmrReload_.isActive()) tmrReload_.start(reloadPause);
    });
    showEntry();
}

HistoryPage::~HistoryPage() = default;

void HistoryPage::setUpTable()
{
    auto* table = ui->tblHistory;
    table->setModel(&model_);
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 12);
    auto* header = table->horizontalHeader();
    header->setHighlightSections(false);
    const auto average = fontMetrics().averageCharWidth();
    const int widths[HistoryModel::Columns] = {20, 16, 12, 20, 28, 13, 12, 9, 8}; // characters
    for (int column = 0; column < HistoryModel::Columns; ++column)
        header->resizeSection(column, widths[column] * average + 16);
    header->setSectionResizeMode(HistoryModel::Program, QHeaderView::Stretch);
    connect(&model_, &QAbstractItemModel::modelReset, this, &HistoryPage::modelReset);
    connect(table->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &HistoryPage::showEntry);
    connect(table, &QAbstractItemView::doubleClicked, this, &HistoryPage::openChosen);
}

void HistoryPage::setUpFilter()
{
    using Outcome = TransferEntry::Outcome;
    ui->cboOutcome->addItem(QStringLiteral("Every outcome"));
    for (const auto outcome :
         {Outcome::Finished, Outcome::Stopped, Outcome::Cancelled, Outcome::Unconfirmed, Outcome::PortLost})
        ui->cboOutcome->addItem(HistoryWords::outcome(outcome), static_cast<int>(outcome));
    ui->dteTo->setDate(QDate::currentDate());
    ui->dteFrom->setDate(QDate::currentDate().addDays(-30));
    ui->dteFrom->setEnabled(false);
    ui->dteTo->setEnabled(false);
    connect(ui->chkFrom, &QCheckBox::toggled, ui->dteFrom, &QWidget::setEnabled);
    connect(ui->chkTo, &QCheckBox::toggled, ui->dteTo, &QWidget::setEnabled);
    for (auto* box : {ui->chkFrom, ui->chkTo})
        connect(box, &QCheckBox::toggled, this, &HistoryPage::applyFilter);
    for (auto* date : {ui->dteFrom, ui->dteTo})
        connect(date, &QDateEdit::dateChanged, this, &HistoryPage::filterLater);
    for (auto* combo : {ui->cboMachine, ui->cboOutcome})
        connect(combo, &QComboBox::activated, this, &HistoryPage::applyFilter);
    const auto oneRow = [this] {
        return ui->whatLayout->sizeHint().width() + ui->filterLayout->spacing() + ui->whenLayout->sizeHint().width();
    };
    new CompactRow(*ui->boxFilter, oneRow, [this](bool isCompact) {
        ui->filterLayout->setDirection(isCompact ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    });
    connect(ui->txtProgram, &QLineEdit::textChanged, this, &HistoryPage::filterLater);
    connect(ui->btnClearFilter, &QPushButton::clicked, this, &HistoryPage::clearFilter);
    tmrFilter_.setSingleShot(true);
    connect(&tmrFilter_, &QTimer::timeout, this, &HistoryPage::applyFilter);
}

void HistoryPage::showMachine(const QString& machine)
{
    listMachines(machine);
    history_.keptDays(this, [this](int days) { showKept(days); });
    applyFilter();
    if (!isVisible()) {
        const QRect area = screen()->availableGeometry();
        resize(size().boundedTo(area.size() - frameAllowance));
        move(area.center() - rect().center());
    }
    show();
    raise();
    activateWindow();
    ui->tblHistory->setFocus();
}

// A machine that has no transfer yet, or none under its present name, is in the list as well if it is the chosen one.
void HistoryPage::listMachines(const QString& chosen)
{
    const auto list = [this](QStringList names, const QString& current) {
        if (!current.isEmpty() && !names.contains(current)) names.prepend(current);
        ui->cboMachine->clear();
        ui->cboMachine->addItem(QStringLiteral("All machines"));
        for (const auto& name : names)
            ui->cboMachine->addItem(name, name);
        ui->cboMachine->setCurrentIndex(std::max(0, ui->cboMachine->findData(current)));
    };
    list({}, chosen);
    history_.machines(
        this, [this, list](const QStringList& names) { list(names, ui->cboMachine->currentData().toString()); });
}

HistoryFilter HistoryPage::chosenFilter() const
{
    HistoryFilter filter;
    filter.machine = ui->cboMachine->currentData().toString();
    filter.program = ui->txtProgram->text().trimmed();
    if (ui->chkFrom->isChecked()) filter.from = ui->dteFrom->date();
    if (ui->chkTo->isChecked()) filter.to = ui->dteTo->date();
    if (ui->cboOutcome->currentIndex() > 0)
        filter.outcome = static_cast<TransferEntry::Outcome>(ui->cboOutcome->currentData().toInt());
    return filter;
}

void HistoryPage::filterLater()
{
    tmrFilter_.start(typingPause);
}

void HistoryPage::applyFilter()
{
    tmrFilter_.stop();
    model_.setFilter(chosenFilter());
    ui->btnClearFilter->setEnabled(model_.filter() != HistoryFilter());
    history_.count(this, model_.filter(), mostCounted + 1, [this](qint64 count) { showCount(count); });
}

void HistoryPage::clearFilter()
{
    const QSignalBlocker quiet(ui->txtProgram);
    ui->cboMachine->setCurrentIndex(0);
    ui->cboOutcome->setCurrentIndex(0);
    ui->txtProgram->clear();
    ui->chkFrom->setChecked(false);
    ui->chkTo->setChecked(false);
    applyFilter();
}

void HistoryPage::showCount(qint64 count)
{
    ui->lblCount->setText(count > mostCounted
                              ? QStringLiteral("More than %1").arg(TransferWords::count(mostCounted, "transfer"))
                              : TransferWords::count(count, "transfer"));
}

void HistoryPage::modelReset()
{
    const bool isEmpty = model_.rowCount() == 0;
    const bool isFiltered = model_.filter() != HistoryFilter();
    ui->lblEmpty->setText(isFiltered ? QStringLiteral("No transfer matches") : QStringLiteral("No transfers yet"));
    ui->lblEmptyHint->setText(isFiltered
                                  ? QStringLiteral("Change the filter, or clear it to see all transfers.")
                                  : QStringLiteral("Every program sent or received from now on is listed here."));
    ui->stack->setCurrentWidget(isEmpty ? ui->pageEmpty : ui->pageTable);
    ui->btnExport->setEnabled(!isEmpty);
    if (const int row = model_.rowOf(chosenKey_); row >= 0)
        ui->tblHistory->selectRow(row);
    else if (!isEmpty)
        ui->tblHistory->selectRow(0);
    showEntry();
}

// New transfers come in at the top: whoever reads further down is not disturbed.
void HistoryPage::reload()
{
    if (!isVisible() || ui->tblHistory->verticalScrollBar()->value() > 0) return;
    listMachines(ui->cboMachine->currentData().toString());
    applyFilter();
}

const TransferEntry* HistoryPage::chosenEntry() const
{
    const int row = ui->tblHistory->currentIndex().row();
    return row >= 0 && row < model_.rowCount() ? &model_.entry(row) : nullptr;
}

void HistoryPage::showEntry()
{
    const auto* entry = chosenEntry();
    if (entry) chosenKey_ = entry->key;
    ui->lblDetails->setText(entry ? HistoryWords::details(*entry) : QString());
    const bool hasFile = entry && QFileInfo(entry->path).isFile();
    ui->btnOpenAgain->setEnabled(hasFile);
    ui->btnOpenAgain->setToolTip(hasFile  ? QStringLiteral("Open this file for sending to %1").arg(entry->machine)
                                 : !entry ? QString()
                                          : QStringLiteral("There is no such file any more"));
}

void HistoryPage::openChosen()
{
    if (!chosenEntry()) return;
    const auto entry = *chosenEntry(); // a transfer may end, and the rows be read again, while the operator is asked
    if (QFileInfo(entry.path).isFile()) Q_EMIT openAgain(entry.machine, entry.path);
}

void HistoryPage::exportAll()
{
    auto* dialog = FileDialogs::make(this, QStringLiteral("Export history"), {});
    dialog->setObjectName(QStringLiteral("exportDialog"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("csv"));
    dialog->setNameFilter(QStringLiteral("Comma-separated values (*.csv)"));
    dialog->selectFile(QStringLiteral("history.csv"));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
        ui->btnExport->setEnabled(false);
        ui->lblCount->setText(QStringLiteral("Exporting..."));
        history_.exportTo(this, path, model_.filter(), [this, path](const QString& error) {
            ui->btnExport->setEnabled(true);
            ui->lblCount->setText(error.isEmpty() ? QStringLiteral("Exported to %1").arg(QFileInfo(path).fileName())
                                                  : QStringLiteral("Not exported"));
            if (error.isEmpty()) return;
            MessageBox::ask(this, QStringLiteral("Could not save file %1\r\r%2").arg(path, error), QStringLiteral("OK"),
                            {});
        });
    });
    dialog->open();
}

void HistoryPage::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        openChosen();
    } else {
        QWidget::keyPressEvent(event);
    }
}
