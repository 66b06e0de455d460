// SPDX-License-Identifier: GPL-3.0-or-later
// For how long entries are kept.
#include "history/HistoryPage.h"
#include "ui_HistoryPage.h"

#include "config/TransferWords.h"
#include "history/History.h"
#include "widgets/MessageBox.h"

namespace
{
struct Period {
    int days;
    const char* words;
};
constexpr Period periods[] = {{91, "3 months"},  {365, "1 year"},    {730, "2 years"},
                              {1826, "5 years"}, {3652, "10 years"}, {0, "Always"}};
} // namespace

void HistoryPage::setUpKept()
{
    for (const auto& period : periods)
        ui->cboKept->addItem(QString::fromLatin1(period.words), period.days);
    connect(ui->cboKept, &QComboBox::activated, this, &HistoryPage::keptChosen);
}

void HistoryPage::showKept(int days)
{
    keptDays_ = days;
    if (ui->cboKept->findData(days) < 0) ui->cboKept->addItem(TransferWords::count(days, "day"), days);
    ui->cboKept->setCurrentIndex(ui->cboKept->findData(days));
}

// A slip of the mouse wheel must not delete anything.
void HistoryPage::keptChosen()
{
    constexpr int mostCounted = 1'000'000;
    const int days = ui->cboKept->currentData().toInt();
    history_.countOlderThan(this, days, mostCounted, [this, days](qint64 old) {
        const QString question = QStringLiteral("Delete %1 from the history?\r\rThey are older than %2.");
        const bool isWanted =
            old == 0 ||
            MessageBox::ask(this, question.arg(TransferWords::count(old, "transfer"), ui->cboKept->currentText()),
                            QStringLiteral("Delete"), QStringLiteral("Cancel"));
        isWanted ? keep(days) : showKept(keptDays_);
    });
}

void HistoryPage::keep(int days)
{
    keptDays_ = days;
    history_.setKeptDays(days);
}
