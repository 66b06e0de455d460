// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

/// Answers every message box with a click on the button of that label, with the key Enter, or with Escape for none, and
/// keeps what they said.
class MessageBoxes : public QTimer
{
public:
    explicit MessageBoxes(QString button) : button_(std::move(button))
    {
        callOnTimeout([this] { answer(); });
        start(1);
    }

    QStringList texts;

private:
    void answer()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible()) return;
        texts << (box->textFormat() == Qt::PlainText ? box->text() : QStringLiteral("shown as markup"));
        if (button_.isEmpty()) return QTest::keyClick(box, Qt::Key_Escape);
        if (button_ == QLatin1String("Enter")) return QTest::keyClick(box, Qt::Key_Enter);
        for (auto* button : box->buttons())
            if (button->text() == button_) return QTest::mouseClick(button, Qt::LeftButton);
    }

    const QString button_;
};
