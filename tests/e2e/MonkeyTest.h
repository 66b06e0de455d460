// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "e2e/ActionLog.h"
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "e2e/WireCheck.h"

#include <QRandomGenerator>

#include <array>

class viewTX;

/// An operator without a plan: random clicks and keys on what is visible, while three machines transfer. How many and
/// from which seed: VARNOCK_MONKEY_ACTIONS, VARNOCK_MONKEY_SEED. Its actions are in MonkeyActions.cpp. Threads make two
/// runs of a seed alike, not equal.
class MonkeyTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void noControlEverGetsAForeignOrMisplacedLine();

private:
    struct Place {
        char letter;
        std::unique_ptr<cncsim::SimulatedControl> control;
        QStringList files;
        WireCheck wire;
        bool isHeld = false;
    };

    void buildShop();
    void watchStops(viewTX* view);
    template <typename Action> void recordSends(Action action);
    void act();
    void chooseSomething();
    void clickSomething();
    void pressSomething();
    void touchControl();
    void mendMachine();
    void closeAWindow();
    void answerDialog();
    void answer(QWidget* dialog);
    void check();
    void finish();
    void sendOn(Place& place);

    Place* placeOf(const MachineRecord& machine);
    QList<viewTX*> transfers() const;
    QList<QWidget*> touchable() const;
    static bool isHarmless(const QWidget& widget);
    static int weight(const QWidget& widget);
    static QString stored();
    static QString reread(const QString& text);
    int chance(int below) { return static_cast<int>(random_.bounded(below)); }

    QTemporaryDir dir_;
    std::array<Place, 3> places_;
    std::unique_ptr<Operator> op_;
    QRandomGenerator random_;
    QRandomGenerator answers_; // its own: when dialogs come up depends on threads
    bool isAnswering_ = false;
    ActionLog log_;
};
