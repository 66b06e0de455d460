// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/CardDrag.h"

#include <QList>
#include <QObject>
#include <QString>

class viewMC;
namespace Ui
{
class mainWindow;
}

/// The cards of the machines in the main window: the keys that go through them, the filter above them, and what the
/// operator does to change their order. Shows the machine list's order and changes nothing in it. Main thread.
class MachineList : public QObject
{
    Q_OBJECT
public:
    /// Of the controls in the main window, which outlive this object.
    explicit MachineList(Ui::mainWindow& ui);

    /// Takes in the card of a machine that is new in the machine list. Then arrange.
    void add(viewMC& icon);
    /// The machine list has changed: every card goes to its place.
    void arrange();
    /// Scrolls to the card and gives it the keyboard. A filter that hides it is dropped.
    void goTo(viewMC& icon);
    /// The same with the card shown at that place of the machine list, or the next one.
    void goNear(int index);

Q_SIGNALS:
    /// The machine is to be at that place of the machine list.
    void moveWanted(int from, int to);
    void duplicateWanted(int index);
    /// The program is to be sent by that machine.
    void programWanted(int index, const QString& path);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QList<viewMC*> shown() const;
    void makeTabStop(const viewMC& icon);
    void step(const viewMC& from, int cards);
    void page(const viewMC& from, int pages);
    void goToNamed(const viewMC& from, const QString& begin);
    void putAmongShown(const viewMC& icon, qsizetype place);
    void moveAmongShown(const viewMC& icon, int cards);
    void showMenu(viewMC& icon, const QPoint& place);
    void applyFilter();

    Ui::mainWindow& ui_;
    CardDrag drag_;
};
