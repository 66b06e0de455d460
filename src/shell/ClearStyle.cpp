// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/ClearStyle.h"

#include "widgets/TextLook.h"

#include <QAbstractButton>
#include <QEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace
{
constexpr int darkLightness = 128;
constexpr int hintAlpha = 160, outlineAlpha = 110, disabledAlpha = 50; // of the text colour, of 255
constexpr double usualPoints = 10;

// What the platform's style leaves out: it goes by the screen's resolution, not by the size of the text.
double textScale()
{
    return std::max(QGuiApplication::font().pointSizeF() / usualPoints, 1.0);
}

void drawOutline(QPainter& painter, const QStyleOption& option)
{
    QColor colour = option.palette.color(QPalette::WindowText);
    colour.setAlpha(option.state & QStyle::State_Enabled ? outlineAlpha : disabledAlpha);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
    painter.restore();
}

bool isArrow(QStyle::PrimitiveElement element)
{
    return element == QStyle::PE_IndicatorArrowUp || element == QStyle::PE_IndicatorArrowDown ||
           element == QStyle::PE_IndicatorArrowLeft || element == QStyle::PE_IndicatorArrowRight;
}

void fitIcon(QAbstractButton& button)
{
    static const char usualSize[] = "usualIconSize";
    if (!button.property(usualSize).isValid()) button.setProperty(usualSize, button.iconSize());
    const QSize usual = button.property(usualSize).toSize();
    button.setIconSize({TextLook::scaled(button, usual.width()), TextLook::scaled(button, usual.height())});
}
} // namespace

// Dark themes' own colour for the hints in empty fields can be as dark as the field.
void ClearStyle::polish(QPalette& palette)
{
    QProxyStyle::polish(palette);
    QColor hint = palette.color(QPalette::Text);
    hint.setAlpha(hintAlpha);
    palette.setColor(QPalette::PlaceholderText, hint);
}

// Once for each widget, before it is shown.
void ClearStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    auto* button = qobject_cast<QAbstractButton*>(widget);
    if (!button) return;
    fitIcon(*button);
    button->installEventFilter(this);
}

bool ClearStyle::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FontChange)
        if (auto* button = qobject_cast<QAbstractButton*>(watched)) fitIcon(*button);
    return QProxyStyle::eventFilter(watched, event);
}

int ClearStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    const int usual = QProxyStyle::pixelMetric(metric, option, widget);
    switch (metric) {
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_SmallIconSize:
    case PM_ScrollBarExtent:
        return static_cast<int>(usual * textScale());
    default:
        return usual;
    }
}

int ClearStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* result) const
{
    // The theme's own pictures on standard buttons are drawn for its light or its dark background, and not for ours.
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    return QProxyStyle::styleHint(hint, option, widget, result);
}

bool ClearStyle::needsOutline(const QStyleOption& option) const
{
    const bool isDark = option.palette.color(QPalette::Window).lightness() < darkLightness;
    return isDark && baseStyle()->name() == QLatin1String("fusion") && !(option.state & State_HasFocus);
}

void ClearStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const
{
    if (isArrow(element) && textScale() > 1) {
        const QPointF middle = QRectF(option->rect).center();
        painter->save();
        painter->translate(middle);
        painter->scale(textScale(), textScale());
        painter->translate(-middle);
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        painter->restore();
        return;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isPopup = element == PE_Frame && widget && widget->isWindow();
    const bool hasOutline =
        element == PE_IndicatorCheckBox || element == PE_FrameLineEdit || element == PE_PanelButtonCommand || isPopup;
    if (hasOutline && needsOutline(*option)) drawOutline(*painter, *option);
}

void ClearStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                    const QWidget* widget) const
{
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control != CC_ComboBox) return;
    if (textScale() > 1) { // over the usual arrow
        QStyleOption arrow(*option);
        arrow.rect = subControlRect(control, option, SC_ComboBoxArrow, widget);
        proxy()->drawPrimitive(PE_IndicatorArrowDown, &arrow, painter, widget);
    }
    if (needsOutline(*option)) drawOutline(*painter, *option);
}
