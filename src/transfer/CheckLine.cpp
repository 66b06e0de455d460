// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/CheckLine.h"
#include "ui_CheckLine.h"

#include "config/TransferWords.h"
#include "editor/ProgramEditor.h"
#include "transfer/ProgramChecker.h"
#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <algorithm>

namespace
{
constexpr int checkImage = 18; // pixels

// "Warning, line 12: X stands twice in the block."
QString inWords(const Finding& finding)
{
    const QString severity = finding.severity == Severity::Warning ? QStringLiteral("Warning") : QStringLiteral("Note");
    if (finding.line == 0) return QStringLiteral("%1: %2").arg(severity, finding.text);
    return QStringLiteral("%1, line %2: %3").arg(severity, TransferWords::number(finding.line), finding.text);
}
} // namespace

CheckLine::CheckLine(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::CheckLine>())
{
    ui->setupUi(this);
    TextLook::dim(*ui->lblCheck);
    connect(ui->btnNextFinding, &QToolButton::clicked, this, [this] { go(1); });
    connect(ui->btnPreviousFinding, &QToolButton::clicked, this, [this] { go(-1); });
    showReport({});
}

CheckLine::~CheckLine() = default;

void CheckLine::watch(ProgramEditor& editor)
{
    editor_ = &editor;
    checker_ = new ProgramChecker(editor, this);
    connect(checker_, &ProgramChecker::checked, this, &CheckLine::showReport);
    connect(checker_, &ProgramChecker::outOfDate, this, &CheckLine::showBusy);
}

void CheckLine::setRules(const CheckRules& rules)
{
    checker_->setRules(rules);
}

void CheckLine::setPaused(bool isPaused)
{
    checker_->setPaused(isPaused);
}

void CheckLine::showReport(const CheckReport& report)
{
    report_ = report;
    shown_ = -1;
    showFinding();
}

void CheckLine::showBusy()
{
    report_ = {};
    shown_ = -1;
    showFinding();
    showText(QStringLiteral("Checking the program..."), {});
}

void CheckLine::go(qsizetype by)
{
    const qsizetype count = report_.findings.size();
    if (count == 0) return;
    shown_ = shown_ < 0 && by < 0 ? count - 1 : (shown_ + by + count) % count;
    showFinding();
    const auto number = static_cast<int>(report_.findings[shown_].line);
    if (number == 0) return editor_->leavePlace(); // the whole program is meant
    if (!editor_->isShown()) return;
    const auto line = editor_->lineNumbered(std::min(number, editor_->lines()));
    // The caret says where a send goes on: it moves only where the operator can write.
    if (editor_->isReadOnly()) return editor_->markPlace(line);
    editor_->leavePlace();
    editor_->showPlace({line.start, line.start});
}

void CheckLine::showFinding()
{
    const auto& findings = report_.findings;
    ui->btnNextFinding->setHidden(findings.isEmpty());
    ui->btnPreviousFinding->setHidden(findings.isEmpty());
    if (findings.isEmpty()) {
        const bool hasProgram = editor_ && editor_->textSize() > 0;
        return showText(hasProgram ? QStringLiteral("Check: no findings") : QString(), {});
    }
    const Finding& finding = findings[std::max<qsizetype>(shown_, 0)];
    QString text = shown_ < 0 ? QStringLiteral("%1 to look at. ").arg(TransferWords::count(report_.total, "thing"))
                              : QStringLiteral("%1 of %2. ")
                                    .arg(TransferWords::number(shown_ + 1), TransferWords::number(findings.size()));
    text += inWords(finding);
    showText(text, finding.severity == Severity::Warning ? QStringLiteral("warning") : QStringLiteral("about"));
}

void CheckLine::showText(const QString& text, const QString& image)
{
    ui->imgCheck->setHidden(image.isEmpty());
    if (!image.isEmpty()) Images::showIn(*ui->imgCheck, image, checkImage);
    ui->lblCheck->setText(text);
}
