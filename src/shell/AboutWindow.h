// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class AboutWindow;
}

/// The program's version, licence and libraries, the way to its guide, and what it may do on the desktop.
class AboutWindow : public QDialog
{
    Q_OBJECT
public:
    explicit AboutWindow(QWidget* parent);
    ~AboutWindow() override;

private:
    void showLinks();

    std::unique_ptr<Ui::AboutWindow> ui;
};
