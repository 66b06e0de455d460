// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QTest>
#include <QTimer>

/// While it lives, answers every message box with a click on the button of that label, or Escape for an empty one, and
/// keeps what the boxes said.
class MessageBoxes : public QObject
{
public:
    explicit MessageBoxes(const QString& button) : button_(button)
    {
        connect(&poll_, &QTimer::timeout, this, [this] { answer(); });
        poll_.start(1);
    }

    QStringList texts;

private:
    void answer()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible()) return;
        texts << (box->textFormat() == Qt::PlainText ? box->text() : QStringLiteral("shown as markup"));
        if (button_.isEmpty()) return QTest::keyClick(box, Qt::Key_Escape);
        const auto buttons = box->buttons();
        auto* wanted = buttons.first();
        for (auto* button : buttons)
            if (button->text() == button_) wanted = button;
        QTest::mouseClick(wanted, Qt::LeftButton);
    }

    const QString button_;
    QTimer poll_;
};
