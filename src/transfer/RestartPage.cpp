// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/RestartPage.h"
#include "ui_RestartPage.h"

#include "config/TransferWords.h"
#include "editor/ProgramEditor.h"
#include "program/StateReader.h"
#include "program/StateRows.h"
#include "widgets/Images.h"
#include "widgets/Reasons.h"
#include "widgets/TextLook.h"

#include <QHeaderView>
#include <QScreen>

#include <algorithm>
#include <array>

namespace
{
constexpr int warningsShare = 3;        // of the page's height, at most; more scroll
constexpr QSize frameAllowance(24, 48); // pixels of the screen that the window's frame may need

struct Choice {
    Control control;
    const char* name;
};
constexpr std::array choices{
    Choice{Control::FanucMill, "Mill, Fanuc's words"}, Choice{Control::FanucLathe, "Lathe, Fanuc's words"},
    Choice{Control::OkumaMill, "Mill, Okuma's words"}, Choice{Control::OkumaLathe, "Lathe, Okuma's words"}};

int programLines(const ProgramEditor& editor)
{
    return editor.textSize() > 0 ? editor.lineNumber(editor.textSize() - 1) : 1;
}

QString remarkName(RemarkKind kind)
{
    static const std::array<QString, remarkKindCount> names{
        QStringLiteral("Not understood"), QStringLiteral("Call"),           QStringLiteral("Jump"),
        QStringLiteral("Variable"),       QStringLiteral("Block skip"),     QStringLiteral("Stores data"),
        QStringLiteral("Zero point"),     QStringLiteral("Transformation"), QStringLiteral("Another program")};
    return names[static_cast<std::size_t>(kind)];
}
} // namespace

RestartPage::RestartPage(const MachineRecord& machine, ProgramEditor& editor, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::RestartPage>()), editor_(editor)
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    resize(size().boundedTo(screen()->availableSize() - frameAllowance));
    setWindowTitle(QStringLiteral("Send from here: %1").arg(machine.MCNAME));
    ui->btnSendRestart->setIcon(Images::icon(QStringLiteral("send")));
    ui->lblBlock->setFont(TextLook::fixedFont());
    TextLook::dim(*ui->lblPlan);
    ui->lstWarnings->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    ui->lstWarnings->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    ui->lstState->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    ui->lstState->header()->setSectionResizeMode(1, QHeaderView::Stretch);
    connect(ui->lstWarnings->header(), &QHeaderView::sectionResized, this, &RestartPage::fitWarnings);
    setUpChoices(machine);
    connect(ui->spnLine, &QSpinBox::valueChanged, this, &RestartPage::read);
    connect(ui->cboControl, &QComboBox::activated, this, &RestartPage::read);
    connect(ui->btnClearLine, &QPushButton::clicked, this,
            [this] { ui->spnLine->setValue(static_cast<int>(clearLine_)); });
    connect(ui->btnAddBlock, &QPushButton::clicked, ui->tblBlocks, &StartBlockTable::addBlock);
    connect(ui->btnRemoveBlock, &QPushButton::clicked, ui->tblBlocks, &StartBlockTable::removeBlock);
    connect(ui->tblBlocks, &StartBlockTable::blocksChanged, this, &RestartPage::showPlan);
    connect(ui->tblBlocks, &StartBlockTable::lineWanted, this, &RestartPage::showLine);
    const auto showItem = [this](const QTreeWidgetItem* item) { showLine(item->data(0, Qt::UserRole).toLongLong()); };
    for (auto* list : {ui->lstWarnings, ui->lstState}) {
        connect(list, &QTreeWidget::itemClicked, this, showItem);
        connect(list, &QTreeWidget::itemActivated, this, showItem);
    }
    connect(ui->btnCancelRestart, &QPushButton::clicked, this, &QDialog::close);
    connect(ui->btnSendRestart, &QPushButton::clicked, this, [this] {
        ui->btnSendRestart->setFocus(); // a block that is being typed counts as it stands
        Q_EMIT sendWanted(editor_.lineNumbered(line()).start, ui->tblBlocks->blocks());
    });
    connect(&editor, &QsciScintilla::textChanged, this, &QDialog::close); // what it shows is of another text
    connect(this, &QDialog::finished, &editor, &ProgramEditor::leavePlace);
    read();
}

RestartPage::~RestartPage() = default;

void RestartPage::closeAll(const QWidget& view)
{
    for (auto* page : view.findChildren<RestartPage*>())
        page->close();
}

void RestartPage::setUpChoices(const MachineRecord& machine)
{
    const Control taken = controlFor(machine.MCMODE, MachineKind::Mill);
    for (const auto& choice : choices) {
        ui->cboControl->addItem(QString::fromLatin1(choice.name));
        if (choice.control == taken) ui->cboControl->setCurrentIndex(ui->cboControl->count() - 1);
    }
    const int last = programLines(editor_);
    ui->spnLine->setRange(1, last);
    ui->spnLine->setValue(std::min(editor_.lineNumber(editor_.caret()), last));
    ui->lblLines->setText(QStringLiteral("of %1:").arg(TransferWords::number(last)));
}

int RestartPage::line() const
{
    return ui->spnLine->value();
}

void RestartPage::read()
{
    const auto here = editor_.lineNumbered(line());
    ui->lblBlock->setText(editor_.lineText(here).trimmed());
    const auto above = editor_.view({0, here.start});
    // The blocks of the line before must not go out with this one, however the table is worked on meanwhile.
    canStart_ = false;
    ui->btnAddBlock->setEnabled(false);
    ui->tblBlocks->setBlocks({});
    ui->lblPlan->setText(QStringLiteral("Reading the program..."));
    const Control control = choices[static_cast<std::size_t>(ui->cboControl->currentIndex())].control;
    work_.start(
        [text = QByteArray(above.data(), static_cast<qsizetype>(above.size())), number = line(),
         control](const std::atomic<bool>& cancelled) { return StateReader::above(number, text, control, &cancelled); },
        [this](const ProgramState& state) { showFound(state); });
}

void RestartPage::showFound(const ProgramState& state)
{
    const Restart restart = proposeRestart(state);
    canStart_ = ::canStart(state);
    clearLine_ = state.clearLine < line() ? state.clearLine : 0;
    showWarnings(restart.warnings);
    showState(state);
    ui->tblBlocks->setBlocks(restart.blocks);
    ui->btnClearLine->setHidden(canStart_ || clearLine_ == 0);
    ui->btnClearLine->setText(QStringLiteral("Start at line %1 instead").arg(clearLine_));
    ui->btnAddBlock->setEnabled(canStart_);
    showPlan();
}

void RestartPage::showWarnings(const QList<StartWarning>& warnings)
{
    ui->lstWarnings->clear();
    const auto add = [this](const QString& text, qsizetype number) {
        auto* item = new QTreeWidgetItem(ui->lstWarnings,
                                         {text, number > 0 ? QStringLiteral("line %1").arg(number) : QString()});
        item->setIcon(0, Images::icon(QStringLiteral("warning")));
        item->setToolTip(0, text);
        item->setData(0, Qt::UserRole, number);
    };
    for (const auto& warning : warnings)
        add(warning.text, warning.line);
    // What no program says.
    add(QStringLiteral("Check at the control: zero points, tool offsets and the tool in the spindle are as they were."),
        0);
    add(QStringLiteral("The way there is straight and in rapid: see that it is free."), 0);
    fitWarnings();
}

// Whole sentences, in as many lines as they need: the list by itself would cut them off.
void RestartPage::fitWarnings()
{
    auto& list = *ui->lstWarnings;
    const int line = fontMetrics().height();
    const int width = list.header()->sectionSize(0) - 3 * line; // of the text beside its icon
    int height = line / 2;
    for (int row = 0; row < list.topLevelItemCount(); ++row) {
        auto* item = list.topLevelItem(row);
        const auto text = list.fontMetrics().boundingRect(QRect(0, 0, width, 0), Qt::TextWordWrap, item->text(0));
        item->setSizeHint(0, {0, std::max(text.height(), line) + line / 3});
        height += item->sizeHint(0).height();
    }
    list.setFixedHeight(std::min(height, this->height() / warningsShare));
}

void RestartPage::addState(const QString& name, const QString& text, qsizetype number, bool isSure)
{
    auto* item = new QTreeWidgetItem(
        ui->lstState, {name, isSure ? text : text + QStringLiteral(" (not sure)"), QString::number(number)});
    if (!isSure) item->setIcon(0, Images::icon(QStringLiteral("warning")));
    item->setToolTip(1, item->text(1));
    item->setData(0, Qt::UserRole, number);
}

// What is not certain comes first.
void RestartPage::showState(const ProgramState& state)
{
    ui->lstState->clear();
    for (const auto& remark : state.remarks) {
        const QString times =
            remark.count > 1 ? QStringLiteral(", %1 times").arg(TransferWords::number(remark.count)) : QString();
        addState(remarkName(remark.kind), QString::fromUtf8(remark.text) + times, remark.lastLine, false);
    }
    auto rows = stateRows(state);
    std::stable_partition(rows.begin(), rows.end(), [](const StateRow& row) { return !row.isSure; });
    for (const auto& row : rows)
        addState(row.name, row.text, row.line, row.isSure);
}

void RestartPage::showPlan()
{
    const auto blocks = ui->tblBlocks->blocks().size();
    Reasons::enable(*ui->btnSendRestart, canStart_, QStringLiteral("No start is possible at this line"));
    ui->btnRemoveBlock->setEnabled(canStart_ && blocks > 0);
    if (!canStart_) return ui->lblPlan->setText(QStringLiteral("No start is possible at this line; see above why."));
    ui->lblPlan->setText(QStringLiteral("Goes out: header, %1, the program from line %2, trailer. "
                                        "The program itself stays as it is.")
                             .arg(TransferWords::count(blocks, "start block"), TransferWords::number(line())));
}

void RestartPage::showLine(qsizetype number)
{
    if (number > 0 && editor_.isShown()) editor_.markPlace(editor_.lineNumbered(static_cast<int>(number)));
}
