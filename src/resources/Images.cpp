// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/Images.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

// At file scope: the macro declares a function of the global namespace.
static void loadResource()
{
    Q_INIT_RESOURCE(varnock);
}

namespace
{
const QByteArray textColour("#000000"); // stands for the theme's text colour in the files

class ThemedSvg : public QIconEngine
{
public:
    explicit ThemedSvg(QByteArray svg) : svg_(std::move(svg)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const QColor ink = QGuiApplication::palette().color(group, QPalette::WindowText);
        QSvgRenderer renderer(QByteArray(svg_).replace(textColour, ink.name().toLatin1()));
        renderer.setAspectRatioMode(Qt::KeepAspectRatio);
        if (mode == QIcon::Disabled) painter->setOpacity(0.45);
        renderer.render(painter, rect);
        painter->setOpacity(1);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, picture.rect(), mode, state);
        return picture;
    }

    QIconEngine* clone() const override { return new ThemedSvg(*this); }

private:
    QByteArray svg_;
};
} // namespace

QIcon Images::icon(const QString& name)
{
    loadResource();
    QFile file(QStringLiteral(":/images/%1.svg").arg(name));
    return file.open(QIODevice::ReadOnly) ? QIcon(new ThemedSvg(file.readAll())) : QIcon();
}
