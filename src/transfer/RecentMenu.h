// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>
#include <QStringList>

#include <functional>

/// The menu of the programs that were opened last for a machine.
class RecentMenu : public QMenu
{
    Q_OBJECT
public:
    /// `paths` is asked each time the menu opens. Becomes a child of `parent`.
    RecentMenu(QWidget* parent, std::function<QStringList()> paths);

Q_SIGNALS:
    void chosen(const QString& path);

private:
    void fill();

    const std::function<QStringList()> paths_;
};
