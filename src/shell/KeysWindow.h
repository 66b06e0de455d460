// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

namespace Ui
{
class KeysWindow;
}

/// All keys of the program and what they do, as the user guide lists them.
class KeysWindow : public QDialog
{
    Q_OBJECT
public:
    explicit KeysWindow(QWidget* parent);
    ~KeysWindow() override;

private:
    std::unique_ptr<Ui::KeysWindow> ui;
};
