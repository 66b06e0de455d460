// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/FindBar.h"
#include "ui_FindBar.h"

#include "editor/EditorColours.h"

#include <QKeyEvent>

FindBar::FindBar(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::FindBar>())
{
    ui->setupUi(this);
    setFocusProxy(ui->txtFind);
    connect(ui->txtFind, &QLineEdit::textEdited, this, &FindBar::textEdited);
    connect(ui->btnFindNext, &QToolButton::clicked, this, &FindBar::nextWanted);
    connect(ui->btnFindPrevious, &QToolButton::clicked, this, &FindBar::previousWanted);
    connect(ui->btnFindClose, &QToolButton::clicked, this, &FindBar::closeWanted);
}

FindBar::~FindBar() = default;

QString FindBar::text() const
{
    return ui->txtFind->text();
}

void FindBar::open(const QString& text)
{
    if (!text.isEmpty()) ui->txtFind->setText(text);
    showOutcome(Outcome::None);
    show();
    ui->txtFind->setFocus(Qt::ShortcutFocusReason);
    ui->txtFind->selectAll();
}

void FindBar::showOutcome(Outcome outcome)
{
    outcome_ = outcome;
    QString text;
    if (outcome == Outcome::NotFound) text = QStringLiteral("Not found");
    if (outcome == Outcome::Wrapped) text = QStringLiteral("Continued from the other end");
    ui->lblFindOutcome->setText(text);
    QPalette colours; // left unset, the field follows the window's
    if (outcome == Outcome::NotFound) {
        colours.setColor(QPalette::Base, EditorColours(palette()).alarm);
        ui->txtFind->setPalette(colours);
    } else {
        ui->txtFind->setPalette({});
    }
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isEnter || !ui->txtFind->hasFocus()) return QWidget::keyPressEvent(event);
    if (event->modifiers() & Qt::ShiftModifier) {
        Q_EMIT previousWanted();
    } else {
        Q_EMIT nextWanted();
    }
}

void FindBar::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && outcome_ == Outcome::NotFound) showOutcome(outcome_);
}
