// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/CardDrag.h"

#include "shell/viewMC.h"

#include <QFrame>
#include <QGraphicsOpacityEffect>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>

namespace
{
constexpr int lineHeight = 4;
constexpr double draggedOpacity = 0.45;
constexpr int scrollTick = 20, scrollStep = 8; // ms, pixels
constexpr int edge = 24;                       // pixels from the ends of the list in which it scrolls
} // namespace

CardDrag::CardDrag(QScrollArea& area, QWidget& panel) : area_(area), panel_(panel), line_(new QFrame(&panel))
{
    line_->setObjectName(QStringLiteral("lineDrop"));
    line_->setAutoFillBackground(true);
    line_->setBackgroundRole(QPalette::Highlight);
    line_->hide();
    QObject::connect(&tmrScroll_, &QTimer::timeout, line_, [this] { scroll(); });
}

void CardDrag::move(viewMC& card, const QList<viewMC*>& cards, const QPoint& pointer)
{
    if (card_ != &card) {
        end();
        card_ = &card;
        auto* faint = new QGraphicsOpacityEffect;
        faint->setOpacity(draggedOpacity);
        card.setGraphicsEffect(faint); // which takes it over
        tmrScroll_.start(scrollTick);
    }
    cards_ = cards;
    pointer_ = pointer;
    show();
}

void CardDrag::show()
{
    const int y = panel_.mapFromGlobal(pointer_).y();
    const auto isAbove = [y](const viewMC* card) { return card->geometry().center().y() < y; };
    place_ = std::count_if(cards_.begin(), cards_.end(), isAbove);
    const bool isLast = place_ == cards_.size();
    const int top = isLast ? cards_.last()->geometry().bottom() + 1 : cards_[place_]->geometry().top();
    const int y0 = std::clamp(top - lineHeight / 2, 0, panel_.height() - lineHeight);
    line_->setGeometry(0, y0, panel_.width(), lineHeight);
    line_->raise();
    line_->show();
}

void CardDrag::scroll()
{
    const int y = area_.viewport()->mapFromGlobal(pointer_).y();
    const int step = y < edge ? -scrollStep : y > area_.viewport()->height() - edge ? scrollStep : 0;
    if (step == 0) return;
    area_.verticalScrollBar()->setValue(area_.verticalScrollBar()->value() + step);
    show();
}

std::optional<qsizetype> CardDrag::end()
{
    tmrScroll_.stop();
    line_->hide();
    if (!card_) return std::nullopt;
    card_->setGraphicsEffect(nullptr);
    card_.clear();
    return place_;
}
