// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QTest>
#include <QTimer>

/// While it lives, answers every message box with a click on the button of that label and keeps what the boxes said.
class MessageBoxes : public QObject
{
public:
    explicit MessageBoxes(const QString& button) : button_(button)
    {
        connect(&poll_, &QTimer::timeout, this, [this] { answer(); });
        poll_.start(1);
    }

    QStringList texts;
    QList<QStringList> buttons; ///< the labels of each box

private:
    void answer()
    {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible()) return;
        texts << box->text();
        QStringList labels;
        QAbstractButton* wanted = box->buttons().first();
        const auto all = box->buttons();
        for (auto* button : all) {
            labels << button->text();
            if (button->text() == button_) wanted = button;
        }
        buttons << labels;
        QTest::mouseClick(wanted, Qt::LeftButton);
    }

    QString button_;
    QTimer poll_;
};
