// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/TextLook.h"

#include <QEvent>
#include <QFontDatabase>
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

void applyLightSelection(QWidget& list)
{
    const QPalette theme = QGuiApplication::palette();
    QColor ground = theme.color(QPalette::Active, QPalette::Highlight);
    ground.setAlphaF(0.25F);
    QPalette own = list.palette();
    if (own.color(QPalette::Active, QPalette::Highlight) == ground) return;
    own.setColor(QPalette::Highlight, ground);
    own.setColor(QPalette::HighlightedText, theme.color(QPalette::Active, QPalette::Text));
    list.setPalette(own);
}

/// Applies a look again after each change of theme. Belongs to the widget.
class ThemedLook : public QObject
{
public:
    ThemedLook(QWidget& widget, void (*apply)(QWidget&)) : QObject(&widget), widget_(widget), apply_(apply)
    {
        apply(widget);
        widget.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::PaletteChange) apply_(widget_);
        return QObject::eventFilter(watched, event);
    }

private:
    QWidget& widget_;
    void (*apply_)(QWidget&);
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
    new ThemedLook(widget, applyDim);
}

void TextLook::lightenSelection(QWidget& list)
{
    new ThemedLook(list, applyLightSelection);
}

// Desktops with large text often leave the fixed font as it was.
QFont TextLook::fixedFont()
{
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixed.setPointSizeF(std::max(fixed.pointSizeF(), QGuiApplication::font().pointSizeF()));
    return fixed;
}
