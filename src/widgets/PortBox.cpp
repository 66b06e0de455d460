// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/PortBox.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>

namespace
{
constexpr int descriptionRole = Qt::AccessibleDescriptionRole; // screen readers have it from there, too
constexpr int edge = 6;                                        // pixels around an item's texts

// An item's path, and below it its description.
class PortItem : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const QString description = index.data(descriptionRole).toString();
        const auto& metrics = option.fontMetrics;
        const int width =
            std::max(metrics.horizontalAdvance(index.data().toString()), metrics.horizontalAdvance(description));
        return {width + 2 * edge, (description.isEmpty() ? 1 : 2) * metrics.lineSpacing() + edge};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const bool isSelected = option.state.testFlag(QStyle::State_Selected);
        painter->fillRect(option.rect, isSelected ? option.palette.highlight() : option.palette.base());
        QColor colour = option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
        QRect line = option.rect.adjusted(edge, edge / 2, -edge, 0);
        line.setHeight(option.fontMetrics.lineSpacing());
        const auto draw = [&](const QString& text, Qt::TextElideMode elide) {
            painter->setPen(colour);
            painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                              option.fontMetrics.elidedText(text, elide, line.width()));
        };
        painter->save();
        painter->setFont(option.font);
        draw(index.data().toString(), Qt::ElideMiddle);
        line.translate(0, line.height());
        if (!isSelected) colour.setAlphaF(0.7F);
        draw(index.data(descriptionRole).toString(), Qt::ElideRight);
        painter->restore();
    }
};
} // namespace

PortBox::PortBox(QWidget* parent) : QComboBox(parent)
{
    setItemDelegate(new PortItem(this));
}

void PortBox::addPort(const QString& path, const QString& description)
{
    addItem(path);
    setItemData(count() - 1, description, descriptionRole);
}

// A lasting name is longer than most boxes are wide.
void PortBox::showPopup()
{
    Q_EMIT aboutToShowList();
    const int wanted = view()->sizeHintForColumn(0) + view()->verticalScrollBar()->sizeHint().width();
    view()->setMinimumWidth(std::min(wanted, screen()->availableGeometry().width() * 3 / 4));
    QComboBox::showPopup();
}
