// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryModel.h"

#include <QTimer>
#include <QWidget>

#include <memory>

class History;
namespace Ui
{
class HistoryPage;
}

/// The window that shows the history: a table with its filter, what the chosen transfer was, export, and for how long
/// entries are kept. The shell opens it. Main thread.
class HistoryPage : public QWidget
{
    Q_OBJECT
public:
    /// `history` outlives this window.
    explicit HistoryPage(History& history, QWidget* parent = nullptr);
    ~HistoryPage() override;

    /// Brings the window to the front, with the transfers of one machine; with no name those of all.
    void showMachine(const QString& machine);

Q_SIGNALS:
    /// The operator wants to send that file to that machine.
    void openAgain(const QString& machine, const QString& path);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void setUpTable();
    void setUpFilter();
    void setUpKept();
    void listMachines(const QString& chosen);
    HistoryFilter chosenFilter() const;
    void filterLater();
    void applyFilter();
    void clearFilter();
    void modelReset();
    void reload();
    void showCount(qint64 count);
    const TransferEntry* chosenEntry() const;
    void showEntry();
    void openChosen();
    void exportAll();
    void showKept(int days);
    void keptChosen();
    void keep(int days);

    History& history_;
    std::unique_ptr<Ui::HistoryPage> ui;
    HistoryModel model_;
    QTimer tmrFilter_; // typing asks once, not for each letter
    QTimer tmrReload_;
    qint64 chosenKey_ = 0; // stays chosen when the rows are read again
    int keptDays_ = 0;
};
