// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/ClearStyle.h"

#include <QPainter>
#include <QStyleOption>
#include <QWidget>

namespace
{
constexpr int darkLightness = 128;
constexpr int outlineAlpha = 110, disabledAlpha = 50; // of the text colour, of 255

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
} // namespace

bool ClearStyle::needsOutline(const QStyleOption& option) const
{
    const bool isDark = option.palette.color(QPalette::Window).lightness() < darkLightness;
    return isDark && baseStyle()->name() == QLatin1String("fusion") && !(option.state & State_HasFocus);
}

void ClearStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isPopup = element == PE_Frame && widget && widget->isWindow();
    const bool hasOutline = element == PE_IndicatorCheckBox || element == PE_FrameLineEdit || isPopup;
    if (hasOutline && needsOutline(*option)) drawOutline(*painter, *option);
}

void ClearStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                    const QWidget* widget) const
{
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_ComboBox && needsOutline(*option)) drawOutline(*painter, *option);
}
