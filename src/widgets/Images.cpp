// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/Images.h"

#include "widgets/TextLook.h"

#include <QEvent>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QLabel>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

// At file scope: the macro declares a function in the global namespace.
static void loadResource()
{
    Q_INIT_RESOURCE(varnock);
}

namespace
{
// In the files these stand for the theme's text colour and its dimmed text colour.
const QByteArray textColour("#000000");
const QByteArray dimColour("#808080");
constexpr double dimShare = 0.62; // of the text colour over the background
constexpr double disabledOpacity = 0.6;
constexpr int smallLogoLimit = 32; // pixels up to which the simpler drawing is clearer

QColor mixed(const QColor& over, const QColor& under, double share)
{
    const auto mix = [share](int a, int b) { return static_cast<int>(a * share + b * (1 - share)); };
    return {mix(over.red(), under.red()), mix(over.green(), under.green()), mix(over.blue(), under.blue())};
}

class ThemedSvg : public QIconEngine
{
public:
    ThemedSvg(QString name, QByteArray svg) : name_(std::move(name)), svg_(std::move(svg)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        const auto palette = QGuiApplication::palette();
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const QColor ink = palette.color(group, QPalette::WindowText);
        const QColor dim = mixed(ink, palette.color(group, QPalette::Window), dimShare);
        QSvgRenderer renderer(
            QByteArray(svg_).replace(textColour, ink.name().toLatin1()).replace(dimColour, dim.name().toLatin1()));
        renderer.setAspectRatioMode(Qt::KeepAspectRatio);
        if (mode == QIcon::Disabled) painter->setOpacity(disabledOpacity);
        renderer.render(painter, rect);
        painter->setOpacity(1);
    }

    // Cached by colour and size: parsing an SVG for every line of a transfer would be slow.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        const QString key = QStringLiteral("%1 %2x%3 %4 %5")
                                .arg(name_)
                                .arg(size.width())
                                .arg(size.height())
                                .arg(mode == QIcon::Disabled)
                                .arg(QGuiApplication::palette().cacheKey());
        QPixmap picture;
        if (QPixmapCache::find(key, &picture)) return picture;
        picture = QPixmap(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, picture.rect(), mode, state);
        painter.end();
        QPixmapCache::insert(key, picture);
        return picture;
    }

    QIconEngine* clone() const override { return new ThemedSvg(*this); }

private:
    QString name_;
    QByteArray svg_;
};

// A label never updates its pixmap; this repaints it when the theme, the font or the screen's scale changes.
class LabelImage : public QObject
{
public:
    LabelImage(QLabel& label, const QString& name, int size)
        : QObject(&label), label_(label), icon_(Images::icon(name)), size_(size)
    {
        label.installEventFilter(this);
        show();
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const bool repaint = event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange ||
                             (event->type() == QEvent::Paint && shownScale_ != label_.devicePixelRatioF());
        if (repaint) show();
        return QObject::eventFilter(watched, event);
    }

private:
    void show()
    {
        shownScale_ = label_.devicePixelRatioF();
        const int size = TextLook::scaled(label_, size_);
        const bool isFixed = label_.maximumWidth() < QWIDGETSIZE_MAX;
        if (isFixed) label_.setFixedSize(size, size);
        label_.setPixmap(icon_.pixmap(QSize(size, size), shownScale_));
    }

    QLabel& label_;
    QIcon icon_;
    int size_;
    double shownScale_ = 0;
};
} // namespace

QIcon Images::icon(const QString& name)
{
    loadResource();
    QFile file(QStringLiteral(":/images/%1.svg").arg(name));
    return file.open(QIODevice::ReadOnly) ? QIcon(new ThemedSvg(name, file.readAll())) : QIcon();
}

QIcon Images::applicationIcon()
{
    QIcon all;
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        const auto name = size <= smallLogoLimit ? QStringLiteral("logo-small") : QStringLiteral("logo");
        all.addPixmap(icon(name).pixmap(QSize(size, size), 1.0));
    }
    return all;
}

void Images::showIn(QLabel& label, const QString& name, int size)
{
    static const QString imageName = QStringLiteral("LabelImage");
    delete label.findChild<QObject*>(imageName, Qt::FindDirectChildrenOnly);
    auto* image = new LabelImage(label, name, size);
    image->setObjectName(imageName);
}
