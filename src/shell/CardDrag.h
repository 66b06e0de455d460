// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPoint>
#include <QPointer>
#include <QTimer>

#include <optional>

class QFrame;
class QScrollArea;
class viewMC;

/// A machine's card under way to another place among the others: a line shows where it would go, and the list scrolls
/// at its ends. The machine list of the main window owns it.
class CardDrag
{
public:
    /// `panel` holds the cards and is what `area` scrolls.
    CardDrag(QScrollArea& area, QWidget& panel);

    /// The pointer holds the card at that place of the screen. `cards` are those shown, from top to bottom.
    void move(viewMC& card, const QList<viewMC*>& cards, const QPoint& pointer);
    /// Lets go. Returns in front of which of the cards shown it would go (behind the last one: their number), or
    /// nothing if no card was under way.
    std::optional<qsizetype> end();

private:
    void show();
    void scroll();

    QScrollArea& area_;
    QWidget& panel_;
    QFrame* line_;
    QTimer tmrScroll_;
    QPointer<viewMC> card_;
    QList<viewMC*> cards_;
    QPoint pointer_;
    qsizetype place_ = 0;
};
