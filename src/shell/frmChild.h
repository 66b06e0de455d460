// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <memory>

class QBoxLayout;
namespace Ui
{
class frmChild;
}

/// The window of an undocked child view. Deletes itself when closed.
class frmChild : public QWidget
{
    Q_OBJECT
public:
    explicit frmChild(int index);
    ~frmChild() override;

    int iIndex = 0; ///< the machine's index

    /// Takes the machine's name as the title.
    void initialize(int index);
    void takeIn(QWidget* childView);
    /// What stands before the view's heading; may be empty.
    void showTitle(const QString& title);
    /// Of the window's button, where a view puts its heading.
    QBoxLayout& strip();
    /// Above other windows, also from where it was minimised. The keyboard stays where it is.
    void bringUp();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    std::unique_ptr<Ui::frmChild> ui;
};
