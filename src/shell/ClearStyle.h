// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

/// The platform's style, with what it leaves to be wished: outlines of fields, check boxes, buttons and popups that can
/// be seen on dark themes (Fusion draws them darker than the background, whatever that is), and icons, boxes and arrows
/// that grow with the text.
class ClearStyle : public QProxyStyle
{
    Q_OBJECT
public:
    using QProxyStyle::QProxyStyle;

    void polish(QWidget* widget) override;
    void polish(QPalette& palette) override;
    using QProxyStyle::polish;
    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool needsOutline(const QStyleOption& option) const;
};
