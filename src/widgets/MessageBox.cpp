// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/MessageBox.h"

#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <QMessageBox>
#include <QPushButton>

namespace
{
constexpr int pictureSize = 32; // pixels
}

bool MessageBox::ask(QWidget* parent, const QString& text, const QString& firstButton, const QString& secondButton)
{
    QMessageBox box(parent);
    box.setObjectName(QStringLiteral("msgBox"));
    box.setWindowModality(Qt::ApplicationModal);
    box.setTextFormat(Qt::PlainText); // a file's or machine's name may look like markup
    box.setText(QString(text).replace(QLatin1Char('\r'), QLatin1Char('\n')));
    // Without a picture Qt leaves its column empty.
    const int size = TextLook::scaled(box, pictureSize);
    box.setIconPixmap(Images::icon(QStringLiteral("warning")).pixmap(QSize(size, size), box.devicePixelRatioF()));
    const auto* first = box.addButton(firstButton, QMessageBox::AcceptRole);
    if (!secondButton.isEmpty()) box.setDefaultButton(box.addButton(secondButton, QMessageBox::RejectRole));
    box.exec();
    return box.clickedButton() == first;
}
