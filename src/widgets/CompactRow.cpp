// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/CompactRow.h"

#include <QEvent>
#include <QLayout>
#include <QToolButton>

#include <algorithm>

namespace
{
// What the text beside the icon adds to a button's width.
int textWidth(const QToolButton& button)
{
    constexpr int gap = 4; // between icon and text, as QToolButton has it
    const auto metrics = button.fontMetrics();
    return gap + metrics.size(Qt::TextShowMnemonic, button.text()).width() + 2 * metrics.horizontalAdvance(u' ');
}

int iconWidth(const QToolButton& button)
{
    const bool hasText = button.toolButtonStyle() == Qt::ToolButtonTextBesideIcon;
    return std::max(button.sizeHint().width() - (hasText ? textWidth(button) : 0), button.minimumWidth());
}

// Of those that are shown, with the gaps between them.
int tools(const QWidget& row, const std::function<int(const QToolButton&)>& width)
{
    int sum = 0;
    for (const auto* button : row.findChildren<QToolButton*>(Qt::FindDirectChildrenOnly))
        if (!button->isHidden()) sum += width(*button) + row.layout()->spacing();
    return sum;
}
} // namespace

CompactRow::CompactRow(QWidget& row, std::function<int()> needed, std::function<void(bool)> arrange)
    : QObject(&row), row_(row), needed_(std::move(needed)), arrange_(std::move(arrange))
{
    row.installEventFilter(this);
}

void CompactRow::ofTools(QWidget& row, int characters)
{
    const auto others = [&row, characters](double share) {
        const auto margins = row.layout()->contentsMargins();
        return static_cast<int>(characters * row.fontMetrics().averageCharWidth() * share) + margins.left() +
               margins.right();
    };
    const auto needed = [&row, others] {
        return others(1) + tools(row, [](const QToolButton& b) { return iconWidth(b) + textWidth(b); });
    };
    const auto arrange = [&row, others](bool isCompact) {
        for (auto* button : row.findChildren<QToolButton*>(Qt::FindDirectChildrenOnly))
            button->setToolButtonStyle(isCompact ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
        row.setMinimumWidth(others(0.5) + tools(row, iconWidth));
    };
    new CompactRow(row, needed, arrange);
}

bool CompactRow::eventFilter(QObject* watched, QEvent* event)
{
    const bool concerns = event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest ||
                          event->type() == QEvent::FontChange || event->type() == QEvent::Show;
    if (concerns && watched == &row_) check();
    return QObject::eventFilter(watched, event);
}

void CompactRow::check()
{
    arrange_(row_.width() < needed_());
}
