// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/CompareWindow.h"
#include "ui_CompareWindow.h"

#include "editor/DifferenceMarks.h"
#include "editor/PairedScroll.h"
#include "program/ProgramCompare.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QScreen>
#include <QShortcut>

#include <algorithm>

namespace
{
QString countText(qsizetype count)
{
    if (count == 0) return QStringLiteral("No differences");
    if (count == 1) return QStringLiteral("1 difference");
    return QStringLiteral("%1 differences").arg(QLocale().toString(count));
}
} // namespace

CompareWindow::CompareWindow(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::CompareWindow>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlags(Qt::Window);
    resize(size().boundedTo(screen()->availableSize() * 17 / 20));
    scroll_ = new PairedScroll(ui->txtLeft, ui->txtRight);
    setUp(ui->txtLeft, Side::Left);
    setUp(ui->txtRight, Side::Right);
    connect(ui->btnNextDifference, &QPushButton::clicked, this, &CompareWindow::goNext);
    connect(ui->btnPreviousDifference, &QPushButton::clicked, this, &CompareWindow::goPrevious);
    connect(ui->chkBlockNumbers, &QCheckBox::toggled, this, &CompareWindow::compare);
    connect(ui->btnCloseCompare, &QPushButton::clicked, this, &QDialog::close);
    // Not the buttons' own shortcuts: those act only once the button has been seen to be pressed.
    new QShortcut(Qt::Key_F7, this, this, &CompareWindow::goNext);
    new QShortcut(Qt::SHIFT | Qt::Key_F7, this, this, &CompareWindow::goPrevious);
    new QShortcut(Qt::Key_Escape, this, this, &QDialog::close); // an editor keeps the key for itself
}

CompareWindow::CompareWindow(const ProgramEditor& editor, const QString& name, const QByteArray& fileBytes,
                             const QString& path, QWidget* parent)
    : CompareWindow(parent)
{
    showTitle(name.isEmpty() ? QStringLiteral("Program") : name, {fileBytes, path});
    ui->lblLeftProgram->setText(name.isEmpty() ? QStringLiteral("In the editor")
                                               : QStringLiteral("In the editor: %1").arg(name));
    ui->txtLeft->copyProgram(editor);
    compare();
}

CompareWindow::CompareWindow(const File& left, const File& right, QWidget* parent) : CompareWindow(parent)
{
    showTitle(QFileInfo(left.path).fileName(), right);
    ui->lblLeftProgram->setText(QStringLiteral("File: %1").arg(QDir::toNativeSeparators(left.path)));
    ui->txtLeft->setProgram(left.bytes);
    compare();
}

CompareWindow::~CompareWindow()
{
    *cancelled_ = true;
}

void CompareWindow::showTitle(const QString& left, const File& right)
{
    setWindowTitle(QStringLiteral("%1 compared with %2").arg(left, QFileInfo(right.path).fileName()));
    ui->lblRightProgram->setText(QStringLiteral("File: %1").arg(QDir::toNativeSeparators(right.path)));
    ui->txtRight->setProgram(right.bytes);
}

void CompareWindow::setUp(ProgramEditor* editor, Side side)
{
    editor->setReadOnly(true);
    editor->setCaretLineVisible(false); // its colour would hide those of the differences
    marks_.append(new DifferenceMarks(editor, side));
    connect(editor, &ProgramEditor::operatorTouched, this, [this, editor, side] { caretMoved(editor, side); });
}

void CompareWindow::compare()
{
    *cancelled_ = true; // what is still being made
    cancelled_ = std::make_shared<std::atomic<bool>>(false);
    showResult({});
    CompareRules rules;
    rules.blockNumbersCount = ui->chkBlockNumbers->isChecked();
    worker_.post(
        [this, rules, cancelled = cancelled_, left = ui->txtLeft->wholeText(), right = ui->txtRight->wholeText()] {
            auto made = ProgramCompare::compare(left, right, rules, cancelled.get());
            if (!made) return;
            auto comparison = std::make_shared<const Comparison>(std::move(*made));
            QMetaObject::invokeMethod(this, [this, cancelled, comparison] {
                if (!*cancelled) showResult(comparison);
            });
        });
}

// Without one: it is still being made.
void CompareWindow::showResult(std::shared_ptr<const Comparison> comparison)
{
    comparison_ = std::move(comparison);
    scroll_->follow(comparison_);
    for (auto* marks : marks_)
        marks->show(comparison_);
    current_ = -1;
    isAtCurrent_ = false;
    const auto count = comparison_ ? comparison_->differences().size() : 0;
    ui->lblDifferences->setText(comparison_ ? countText(count) : QStringLiteral("Comparing..."));
    ui->btnNextDifference->setEnabled(count > 0);
    ui->btnPreviousDifference->setEnabled(count > 0);
    goTo(0);
    showPlace();
}

// Behind the last difference comes the first one again.
void CompareWindow::goTo(qsizetype index)
{
    if (!comparison_ || comparison_->differences().isEmpty()) return;
    const auto& differences = comparison_->differences();
    current_ = (index + differences.size()) % differences.size();
    isAtCurrent_ = true;
    const auto& difference = differences[current_];
    const auto putCaret = [](ProgramEditor& editor, qsizetype line) {
        editor.moveCaretTo(editor.lineNumbered(std::min(static_cast<int>(line), editor.lines())).start);
    };
    putCaret(*ui->txtLeft, difference.left.first);
    putCaret(*ui->txtRight, difference.right.first);
    scroll_->showDifference(difference);
    showPlace();
}

void CompareWindow::caretMoved(const ProgramEditor* editor, Side side)
{
    if (!comparison_) return;
    const int line = editor->lineNumber(editor->caret());
    current_ = comparison_->lastUpTo(side, line);
    isAtCurrent_ = false;
    if (current_ >= 0) {
        const auto& here = comparison_->differences()[current_].on(side);
        isAtCurrent_ = line == here.first || line < here.first + here.count;
    }
    showPlace();
}

void CompareWindow::showPlace()
{
    for (auto* marks : marks_)
        marks->setCurrent(isAtCurrent_ ? current_ : -1);
    QString place;
    const QLocale locale;
    if (isAtCurrent_)
        place = QStringLiteral("%1 of %2")
                    .arg(locale.toString(current_ + 1), locale.toString(comparison_->differences().size()));
    ui->lblPlace->setText(place);
}
