// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class AboutWindow;
}

/// The program's version, licence and libraries.
class AboutWindow : public QDialog
{
    Q_OBJECT
public:
    explicit AboutWindow(QWidget* parent);
    ~AboutWindow() override;

private:
    std::unique_ptr<Ui::AboutWindow> ui;
};
