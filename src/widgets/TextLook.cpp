// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/TextLook.h"

#include <QEvent>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPalette>
#include <QWidget>

#include <algorithm>

namespace
{
constexpr double textShare = 0.7; // of the text colour over the background
constexpr int usualText = 13;     // pixels: 10 points on most screens

void applyDim(QWidget& widget)
{
    const QPalette theme = QGuiApplication::palette();
    const QColor text = theme.color(QPalette::Active, QPalette::WindowText);
    const QColor ground = theme.color(QPalette::Active, QPalette::Window);
    const auto mix = [](int a, int b) { return static_cast<int>(a * textShare + b * (1 - textShare)); };
    const QColor dimmed(mix(text.red(), ground.red()), mix(text.green(), ground.green()),
                        mix(text.blue(), ground.blue()));
    QPalette own = widget.palette();
    if (own.color(QPalette::Active, QPalette::WindowText) == dimmed) return;
    own.setColor(QPalette::Active, QPalette::WindowText, dimmed);
    own.setColor(QPalette::Inactive, QPalette::WindowText, dimmed);
    widget.setPalette(own);
}

class DimText : public QObject
{
public:
    explicit DimText(QWidget& widget) : QObject(&widget), widget_(widget) { widget.installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::PaletteChange) applyDim(widget_);
        return QObject::eventFilter(watched, event);
    }

private:
    QWidget& widget_;
};
} // namespace

int TextLook::scaled(const QWidget& widget, int pixels)
{
    return pixels * std::max(QFontInfo(widget.font()).pixelSize(), usualText) / usualText;
}

void TextLook::enlarge(QWidget& widget, double factor)
{
    QFont font = widget.font();
    if (font.pointSizeF() > 0) font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(true);
    widget.setFont(font);
}

void TextLook::dim(QWidget& widget)
{
    applyDim(widget);
    new DimText(widget); // deleted with the widget
}
