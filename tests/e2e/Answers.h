// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>

/// Answers the questions and file dialogs that come up, in this order: with a button's label, with the key "Enter", or
/// with the path of a file. An empty path leaves a file dialog with Escape.
class Answers : public QTimer
{
public:
    explicit Answers(QStringList answers) : answers_(std::move(answers))
    {
        // Queued: an answer may raise another question, and a timer does not fire inside itself.
        callOnTimeout([this] { QTimer::singleShot(0, this, [this] { answer(); }); });
        start(5);
    }

    QStringList said;     ///< by each, a file dialog by its title
    QStringList proposed; ///< by the file dialogs
    bool areAllGiven() const { return answers_.isEmpty(); }

private:
    void answer()
    {
        QPointer<QWidget> dialog = QApplication::activeModalWidget();
        if (!dialog || !dialog->isVisible() || dialog == last_ || answers_.isEmpty()) return;
        last_ = dialog;
        const QString answer = answers_.takeFirst();
        if (auto* box = qobject_cast<QMessageBox*>(dialog.data())) {
            said << box->text() + u'\n' + box->informativeText();
            if (answer == QLatin1String("Enter")) return QTest::keyClick(box, Qt::Key_Return);
            for (auto* button : box->buttons())
                if (button->text().remove(u'&') == answer) return QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
        auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
        if (!name) return;
        said << dialog->windowTitle();
        proposed << name->text();
        if (!answer.isEmpty()) name->setText(answer);
        QTest::keyClick(name, answer.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
    }

    QStringList answers_;
    QPointer<QWidget> last_;
};
