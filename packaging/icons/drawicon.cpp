// SPDX-License-Identifier: GPL-3.0-or-later
// drawicon FILE.svg SIZE FILE.png: draws a square picture of it; makes missing folders.
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char* argv[])
{
    const int size = argc == 4 ? QByteArray(argv[2]).toInt() : 0;
    if (size <= 0) {
        std::fputs("usage: drawicon FILE.svg SIZE FILE.png\n", stderr);
        return 2;
    }
    const QString target = QString::fromLocal8Bit(argv[3]);
    QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
    QImage picture(size, size, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter);
    painter.end();
    if (drawing.isValid() && QDir().mkpath(QFileInfo(target).path()) && picture.save(target)) return 0;
    std::fprintf(stderr, "drawicon: %s could not be drawn\n", argv[1]);
    return 1;
}
