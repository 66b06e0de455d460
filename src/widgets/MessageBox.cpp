// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/MessageBox.h"

#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace
{
constexpr int pictureSize = 32;      // pixels
constexpr int detailCharacters = 50; // a line of details; by itself the box would be as narrow as its buttons

// What messages and questions have in common.
void setUp(QMessageBox& box, const QString& text)
{
    box.setObjectName(QStringLiteral("msgBox"));
    box.setWindowModality(Qt::ApplicationModal);
    box.setTextFormat(Qt::PlainText); // a file's or machine's name may look like markup
    box.setText(QString(text).replace(QLatin1Char('\r'), QLatin1Char('\n')));
    // Without a picture Qt leaves its column empty.
    const int size = TextLook::scaled(box, pictureSize);
    box.setIconPixmap(Images::icon(QStringLiteral("warning")).pixmap(QSize(size, size), box.devicePixelRatioF()));
}
} // namespace

bool MessageBox::ask(QWidget* parent, const QString& text, const QString& firstButton, const QString& secondButton)
{
    QMessageBox box(parent);
    setUp(box, text);
    const auto* first = box.addButton(firstButton, QMessageBox::AcceptRole);
    if (!secondButton.isEmpty()) box.setDefaultButton(box.addButton(secondButton, QMessageBox::RejectRole));
    box.exec();
    return box.clickedButton() == first;
}

qsizetype MessageBox::choose(QWidget* parent, const Question& question)
{
    QMessageBox box(parent);
    setUp(box, question.heading);
    box.setInformativeText(question.detail);
    if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
        QFont bold = label->font();
        bold.setBold(true);
        label->setFont(bold);
    }
    if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
        label->setTextFormat(Qt::PlainText); // the box sets only its heading's
        label->setMinimumWidth(detailCharacters * label->fontMetrics().averageCharWidth());
    }

    QList<QAbstractButton*> buttons;
    for (qsizetype index = 0; index <= question.last(); ++index) {
        const auto role = index == question.last() ? QMessageBox::RejectRole
                          : index == 0             ? QMessageBox::AcceptRole
                                                   : QMessageBox::DestructiveRole;
        buttons << box.addButton(question.answers[index], role);
    }
    box.setDefaultButton(static_cast<QPushButton*>(buttons.last()));
    box.setEscapeButton(buttons.last());
    box.exec();
    const auto chosen = buttons.indexOf(box.clickedButton());
    return chosen < 0 ? question.last() : chosen;
}

void MessageBox::tell(QWidget* parent, const QString& text)
{
    auto* box = new QMessageBox(parent);
    setUp(*box, text);
    box->setObjectName(QStringLiteral("noticeBox"));
    box->setWindowModality(Qt::NonModal);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setAttribute(Qt::WA_ShowWithoutActivating); // what is being typed is for another window
    box->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    box->show();
}
