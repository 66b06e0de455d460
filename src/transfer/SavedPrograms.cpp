// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/SavedPrograms.h"
#include "ui_SavedPrograms.h"

#include "config/g.h"
#include "config/LineSettings.h"
#include "config/NotificationNames.h"
#include "editor/ProgramEditor.h"
#include "platform/NotificationCenter.h"
#include "program/ProgramName.h"
#include "transfer/ReceiveToFilesDialog.h"
#include "widgets/Images.h"

#include <QDateTime>
#include <QDir>
#include <QFileDialog>

#include <algorithm>
#include <chrono>

SavedPrograms::SavedPrograms(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::SavedPrograms>()), saver_(new ProgramSaver(this))
{
    ui->setupUi(this);
    setUpLook();
    silence_.setSingleShot(true);
    connect(&silence_, &QTimer::timeout, this, &SavedPrograms::silent);
    connect(saver_, &ProgramSaver::answered, this, &SavedPrograms::note);
    connect(ui->chkSaveByItself, &QCheckBox::clicked, this, &SavedPrograms::choose);
    connect(ui->btnSaveSettings, &QToolButton::clicked, this, &SavedPrograms::changeSettings);
    connect(ui->btnTryAgainSaving, &QToolButton::clicked, this, &SavedPrograms::tryAgain);
    connect(ui->btnOpenSaved, &QToolButton::clicked, this, &SavedPrograms::open);
    connect(ui->btnCompareSaved, &QToolButton::clicked, this, &SavedPrograms::compare);
    connect(ui->btnShowSaved, &QToolButton::clicked, this, &SavedPrograms::showInFolder);
    connect(ui->lstSaved, &QTreeWidget::currentItemChanged, this, &SavedPrograms::showActions);
    connect(ui->lstSaved, &QTreeWidget::itemActivated, this, &SavedPrograms::open);
}

SavedPrograms::~SavedPrograms() = default;

void SavedPrograms::watch(ProgramEditor& editor)
{
    editor_ = &editor;
}

void SavedPrograms::follow(const std::shared_ptr<MachineRecord>& machine)
{
    machine_ = machine;
    showSettings();
}

bool SavedPrograms::isOn() const
{
    return machine_ && machine_->toFiles.isOn && !isEnding_;
}

// --- The choice ------------------------------------------------------------------------------------------------------

void SavedPrograms::choose(bool isOn)
{
    machine_->toFiles.isOn = isOn;
    if (!isOn || !ReceiveToFiles::folderOf(*machine_).isEmpty()) return storeSettings();
    auto* dialog = ReceiveToFilesDialog::folderDialog(this, {});
    connect(dialog, &QDialog::finished, this, [this, dialog](int result) {
        if (result == QDialog::Accepted) machine_->toFiles.folder = dialog->selectedFiles().value(0);
        if (machine_->toFiles.folder.isEmpty()) machine_->toFiles.isOn = false; // there is no place for the files
        storeSettings();
    });
    dialog->open();
}

void SavedPrograms::changeSettings()
{
    auto* dialog = new ReceiveToFilesDialog(*machine_, this);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        machine_->toFiles = dialog->chosen();
        if (ReceiveToFiles::folderOf(*machine_).isEmpty()) machine_->toFiles.isOn = false;
        storeSettings();
    });
    dialog->open();
}

void SavedPrograms::storeSettings()
{
    g::saveReceiveToFiles();
    showSettings();
    startSilence();
    tellEditor();
    NotificationCenter::defaultCenter().post(Notifications::toFilesChanged_Event, this);
}

void SavedPrograms::showSettings()
{
    ui->chkSaveByItself->setChecked(isOn());
    const QString folder = QDir::toNativeSeparators(ReceiveToFiles::folderOf(*machine_));
    ui->lblSaveFolder->setText(isOn() ? QStringLiteral("in %1").arg(folder) : QString());
}

// --- What comes ------------------------------------------------------------------------------------------------------

void SavedPrograms::take(const TransferRecord::Received& received)
{
    isUnderWay_ = false;
    silence_.stop();
    if (!isOn()) {
        isMissing_ = true;
        Q_EMIT recorded(received.entry);
        return;
    }
    const ReceiveToFiles& files = machine_->toFiles;
    const QByteArray& bytes = received.program.bytes;
    programs_.push_back(std::make_unique<Program>());
    Program& program = *programs_.back();
    program.record = received.entry;
    program.isXModem = received.isXModem;
    program.isNotClosed = received.program.end == ReceivedPrograms::End::Missing ||
                          received.entry.outcome != TransferEntry::Outcome::Finished;
    program.order.folder = ReceiveToFiles::folderOf(*machine_);
    program.order.name = ProgramName::ofReceived({bytes.constData(), static_cast<std::size_t>(bytes.size())},
                                                 machine_->MCNAME, QDateTime::currentDateTime(), files.suffix);
    program.order.bytes = bytes;
    program.order.copies = files.copies;
    addRow(program);
    save(program);
}

void SavedPrograms::arrived(bool isUnderWay)
{
    isUnderWay_ = isUnderWay;
    startSilence();
    tellEditor();
}

// By XModem the sender says when it is done, and may pause for long before that.
void SavedPrograms::startSilence()
{
    const bool isXModem = flowControl(machine_->MCFLOW) == FlowControl::XModem;
    if (!isOn() || !isUnderWay_ || isXModem) return silence_.stop();
    silence_.start(std::chrono::seconds(machine_->toFiles.silence));
}

void SavedPrograms::textKept()
{
    kept_ = programs_.size();
    isMissing_ = false;
}

void SavedPrograms::textDropped()
{
    for (std::size_t number = kept_; number < programs_.size(); ++number)
        programs_[number]->isOnlyHere = true;
    textKept();
}

bool SavedPrograms::hasUnsaved() const
{
    return std::any_of(programs_.begin(), programs_.end(), [](const auto& program) {
        return program->isOnlyHere && (program->state == State::Failed || program->state == State::Saving);
    });
}

bool SavedPrograms::saveUnsaved()
{
    if (hasUnsaved()) tryAgain();
    saver_->settle();
    return !hasUnsaved();
}

void SavedPrograms::end()
{
    saver_->settle();
    isEnding_ = true;
    silence_.stop();
    for (const auto& program : programs_)
        recordOnce(*program);
}

void SavedPrograms::save(Program& program)
{
    program.state = State::Saving;
    const auto number = std::find_if(programs_.begin(), programs_.end(),
                                     [&program](const auto& each) { return each.get() == &program; });
    saver_->save(static_cast<int>(number - programs_.begin()), program.order, program.isXModem);
    showRow(program);
}

void SavedPrograms::tryAgain()
{
    for (const auto& program : programs_) {
        if (program->state != State::Failed) continue;
        program->order.folder = ReceiveToFiles::folderOf(*machine_); // another may have been chosen
        if (isOutdated(*program)) renameAsOlder(*program);
        save(*program);
    }
    showFailures();
}

// A program of that name has come since, and has its file: this one must not take its place.
bool SavedPrograms::isOutdated(const Program& program) const
{
    const auto own = std::find_if(programs_.begin(), programs_.end(),
                                  [&program](const auto& each) { return each.get() == &program; });
    return std::any_of(own + 1, programs_.end(), [&program](const auto& later) {
        return later->state != State::Failed && later->order.name == program.order.name &&
               later->order.folder == program.order.folder;
    });
}

void SavedPrograms::renameAsOlder(Program& program)
{
    const QFileInfo name(program.order.name);
    const auto came = QDateTime::fromMSecsSinceEpoch(program.record.ended);
    program.order.name =
        QStringLiteral("%1 of %2.%3")
            .arg(name.completeBaseName(), came.toString(QStringLiteral("yyyy-MM-dd HH.mm.ss")), name.suffix());
}

void SavedPrograms::note(const ProgramSaver::Answer& answer)
{
    using Outcome = KeptFiles::Result::Outcome;
    Program& program = *programs_[static_cast<std::size_t>(answer.number)];
    program.answer = answer;
    program.state = answer.file.outcome == Outcome::Failed ? State::Failed
                    : answer.file.outcome == Outcome::Same ? State::Same
                                                           : State::Saved;
    if (program.state != State::Failed) {
        program.order.bytes.clear();
        program.record.path = answer.file.path;
        program.record.program = program.order.name;
    }
    recordOnce(program);
    showRow(program);
    showFailures();
    showActions();
    tellEditor();
}

void SavedPrograms::recordOnce(Program& program)
{
    if (!std::exchange(program.isRecorded, true)) Q_EMIT recorded(program.record);
}

void SavedPrograms::tellEditor()
{
    if (isUnderWay_ || isMissing_ || (!isOn() && programs_.size() == kept_)) return;
    const bool areSaved =
        std::all_of(programs_.begin() + static_cast<std::ptrdiff_t>(kept_), programs_.end(),
                    [](const auto& p) { return p->state == State::Saved || p->state == State::Same; });
    if (areSaved) editor_->setReceivedSaved();
}
