// SPDX-License-Identifier: GPL-3.0-or-later
// What the form shows as the operator types, and how it is laid out. Nothing here changes what is stored.
#include "shell/viewSetup.h"
#include "ui_viewSetup.h"

#include "config/ControlCodes.h"
#include "config/g.h"
#include "config/LineWords.h"
#include "protocol/Framing.h"
#include "serial/SerialLine.h"
#include "shell/LineSummary.h"
#include "shell/PortWords.h"
#include "widgets/Reasons.h"
#include "widgets/TextLook.h"

#include <QEvent>
#include <QFile>
#include <QResizeEvent>

namespace
{
constexpr int columnCharacters = 75; // width beyond which a column's fields would only get longer

QString sends(const QByteArray& bytes)
{
    return bytes.isEmpty() ? QStringLiteral("Sends nothing")
                           : QStringLiteral("Sends: %1").arg(LineSummary::describe(bytes));
}
} // namespace

void viewSetup::watchFields()
{
    for (auto* box : findChildren<QComboBox*>()) {
        if (box->isEditable()) {
            // Typing "/dev/ttyUSB1" must not become "/dev/ttyUSB10" because that is in the list.
            box->setCompleter(nullptr);
            box->lineEdit()->setAccessibleName(box->accessibleName()); // the form names only the box
        }
        box->installEventFilter(this);
        connect(box, &QComboBox::currentTextChanged, this, &viewSetup::showLive);
        connect(box, &QComboBox::currentIndexChanged, this, &viewSetup::showLive);
    }
    for (auto* edit : findChildren<QLineEdit*>()) {
        connect(edit, &QLineEdit::textChanged, this, &viewSetup::showLive);
        // A pasted line break (from a spreadsheet, say) would be read back as a new line of the settings.
        connect(edit, &QLineEdit::textChanged, edit, [edit](QString text) {
            if (text.contains(u'\n') || text.contains(u'\r')) edit->setText(text.remove(u'\n').remove(u'\r'));
        });
    }
    for (auto* check : findChildren<QCheckBox*>())
        connect(check, &QCheckBox::toggled, this, &viewSetup::showLive);
    connect(ui->cboPorts, &PortBox::aboutToShowList, this, &viewSetup::refreshPorts);
    connect(ui->cboPorts, &PortBox::currentTextChanged, this, &viewSetup::showPort);
    for (QWidget* hint : std::initializer_list<QWidget*>{
             ui->lblPortHint, ui->lblPassedOn, ui->lblSpeedHint, ui->lblFlowHint, ui->lblRepeatHint, ui->lblEOBBytes,
             ui->lblSOTBytes, ui->lblEOTBytes, ui->lblKept, ui->lblEIAHint, ui->lblDelayHint, ui->lblTimeoutHint})
        TextLook::dim(*hint);
    QFont bold = ui->lblSummary->font();
    bold.setBold(true);
    ui->lblSummary->setFont(bold);
    ui->boxColumns->setMaximumWidth(2 * columnCharacters * fontMetrics().averageCharWidth());
    alignLabels();
}

// The fields of all groups begin at the same place.
void viewSetup::alignLabels()
{
    int width = 0;
    QWidgetList labels;
    for (const auto* form : findChildren<QFormLayout*>())
        for (int row = 0; row < form->rowCount(); ++row)
            if (const auto* item = form->itemAt(row, QFormLayout::LabelRole)) labels << item->widget();
    for (const auto* label : labels)
        width = std::max(width, label->sizeHint().width());
    for (auto* label : labels)
        label->setMinimumWidth(width);
}

void viewSetup::refreshPorts()
{
    const QString typed = ui->cboPorts->currentText();
    const QSignalBlocker quiet(ui->cboPorts);
    populatePortsCombo();
    if (typed.isEmpty()) {
        ui->cboPorts->setCurrentIndex(-1);
    } else if (ui->cboPorts->findText(typed, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0) {
        ui->cboPorts->insertItem(0, typed);
    }
    ui->cboPorts->setCurrentText(typed);
}

void viewSetup::showLive()
{
    if (!mc) return;
    showLine();
    showSpeed();
    showFraming();
    fitHeight(); // a hint may have come or gone
    const bool changed = isChanged();
    Reasons::enable(*ui->btnRevert, changed, QStringLiteral("Nothing has been changed"));
    if (changed || ui->lblSaved->text() != QLatin1String("Saved"))
        ui->lblSaved->setText(changed ? QStringLiteral("Unsaved changes") : QString());
}

void viewSetup::showLine()
{
    const auto flow = flowControl(ui->cboFlow->currentIndex());
    const qint64 baud = g::iVal(ui->cboBaud->currentText());
    const QString summary = LineWords::openedLine(
        {baud, dataFormat(ui->cboDBPar->currentIndex()), g::iVal(ui->cboStopBits->currentText()), flow});
    ui->lblSummary->setText(summary);

    const bool isXModem = flow == FlowControl::XModem;
    Reasons::enable(*ui->cboDBPar, !isXModem, QStringLiteral("XModem always has 8 data bits without parity"));
    Reasons::enable(*ui->cboXModemNumbers, isXModem, QStringLiteral("Only XModem numbers its blocks"));
    Reasons::enable(*ui->chkWaitXOn, !isXModem,
                    QStringLiteral("With XModem the control always asks for the first block"));
    QString hint;
    if (isXModem) {
        hint = QStringLiteral("8 data bits without parity. The control asks for each block; start and end of program "
                              "are not sent.");
    } else if (flow == FlowControl::RtsCts && ui->chkWaitXOn->isChecked()) {
        hint = QStringLiteral("Waiting for the start signal works only with None or XON/XOFF.");
    }
    ui->lblFlowHint->setText(hint);
    ui->lblFlowHint->setHidden(hint.isEmpty());

    // XON is both: the control's start signal, and the end of a hold while the last lines drain from its buffer.
    const bool startsByItself =
        flow == FlowControl::XonXoff && ui->chkWaitXOn->isChecked() && ui->chkAutoRepeat->isChecked();
    ui->lblRepeatHint->setText(
        QStringLiteral("A control that holds the line near the end of a copy starts the next one "
                       "by itself as soon as its buffer has room again."));
    ui->lblRepeatHint->setVisible(startsByItself);
}

void viewSetup::showSpeed()
{
    const qint64 baud = g::iVal(ui->cboBaud->currentText());
    const bool isPossible = baud > 0 && SerialLine::hasSpeed(static_cast<unsigned long>(baud));
    const int listed = ui->cboBaud->findText(QString::number(baud));
    QString hint;
    if (ui->cboBaud->currentText().isEmpty() && mc->MCBAUD > 0)
        hint = QStringLiteral("No port can do the stored %1 baud. Choose a speed.").arg(mc->MCBAUD);
    else if (!isPossible)
        hint = QStringLiteral("No port can do this speed. Choose one of the list.");
    else if (listed < 0 || ui->cboBaud->itemData(listed).toBool()) // offered because it is stored
        hint = QStringLiteral("Not every adapter can do this speed.");
    ui->lblSpeedHint->setText(hint);
    ui->lblSpeedHint->setHidden(hint.isEmpty());
}

void viewSetup::showPort()
{
    const QString port = ui->cboPorts->currentText();
    const DeviceNames names(devices_);
    QString hint = PortWords::adapter(port, names);
    if (port.isEmpty()) {
        hint = QStringLiteral("Choose the port that the machine's cable is plugged into.");
    } else if (!QFile::exists(port)) {
        hint = QStringLiteral("This port is not present now.");
    }
    const QString shared = PortWords::sharedWith(port, *mc, g::mcIcons);
    if (!hint.isEmpty() && !shared.isEmpty()) hint += u'\n';
    hint += shared;
    ui->lblPortHint->setText(hint);
    ui->lblPortHint->setHidden(hint.isEmpty());
    ui->cboPorts->lineEdit()->setToolTip(port); // a lasting name is long

    lastingName_ = DeviceNames::isPassedOn(port) ? names.lastingName(port) : QString();
    ui->btnLastingName->setToolTip(lastingName_);
    for (QWidget* offer : std::initializer_list<QWidget*>{ui->lblPassedOn, ui->btnLastingName})
        offer->setHidden(lastingName_.isEmpty());
    fitHeight();
}

void viewSetup::btnLastingName_Click()
{
    ui->cboPorts->setCurrentText(lastingName_);
    ui->cboPorts->setFocus();
}

// The bytes come from the same functions that sending uses.
void viewSetup::showFraming()
{
    const bool isXModem = flowControl(ui->cboFlow->currentIndex()) == FlowControl::XModem;
    const auto type = Framing::controlType(ui->cboMode->currentText());
    const QString eob = ControlCodes::endOfBlock(ui->cboEOB->currentText());
    ui->lblEOBBytes->setText(sends(g::getBytes(eob)));

    const QString reason = QStringLiteral("XModem sends only the program, in blocks");
    Reasons::enable(*ui->txtSOT, !isXModem, reason);
    Reasons::enable(*ui->txtEOT, !isXModem, reason);
    if (isXModem) {
        ui->lblSOTBytes->setText(QStringLiteral("Not sent with XModem"));
        ui->lblEOTBytes->setText(QStringLiteral("Not sent with XModem"));
        return;
    }
    const QString note = type == ControlType::General
                             ? QString()
                             : QStringLiteral("%1, in place of this text. ").arg(ui->cboMode->currentText());
    ui->lblSOTBytes->setText(note + sends(Framing::header(type, ControlCodes::startOrEnd(ui->txtSOT->text()), eob)));
    ui->lblEOTBytes->setText(note + sends(Framing::trailer(type, ControlCodes::startOrEnd(ui->txtEOT->text()), eob)));
}

QStringList viewSetup::shownValues() const
{
    QStringList values;
    for (const auto* box : findChildren<QComboBox*>())
        values << box->currentText() << QString::number(box->isEditable() ? 0 : box->currentIndex());
    for (const auto* edit : {ui->txtMCName, ui->txtTXDataFolder, ui->txtSOT, ui->txtEOT})
        values << edit->text();
    for (const auto* check : findChildren<QCheckBox*>())
        values << QString::number(check->isChecked());
    return values;
}

// One column where there is no room for two.
void viewSetup::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    const int gap = ui->columns->spacing() + 2 * ui->pageLayout->contentsMargins().left();
    const int wide = ui->leftColumn->minimumSize().width() + ui->rightColumn->minimumSize().width() + gap;
    const bool isNarrow = event->size().width() < std::max(wide, 84 * fontMetrics().averageCharWidth());
    ui->columns->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    fitHeight();
}

// Nobody wants to scroll for a few pixels: the groups move together if that saves the scroll bar.
void viewSetup::fitHeight()
{
    const auto fits = [this] {
        for (auto* group : findChildren<QGroupBox*>())
            group->layout()->activate();
        ui->columns->activate();
        ui->pageLayout->activate();
        return ui->pageLayout->totalHeightForWidth(ui->scrSetup->width()) <= ui->scrSetup->height();
    };
    setSpace(false);
    if (fits()) return;
    setSpace(true);
    if (!fits()) setSpace(false);
}

void viewSetup::setSpace(bool isTight)
{
    const int edge = isTight ? 6 : 12, gap = isTight ? 6 : 14, page = isTight ? 6 : 16;
    for (auto* group : findChildren<QGroupBox*>()) {
        group->layout()->setContentsMargins(12, edge, 12, edge);
        if (auto* form = qobject_cast<QFormLayout*>(group->layout())) form->setVerticalSpacing(isTight ? 3 : 7);
    }
    ui->leftColumn->setSpacing(gap);
    ui->rightColumn->setSpacing(gap);
    ui->pageLayout->setContentsMargins(16, page, 16, page);
}

bool viewSetup::eventFilter(QObject* watched, QEvent* event)
{
    // Turning the wheel over the form scrolls it; it must not set another baud rate on the way.
    if (event->type() == QEvent::Wheel && qobject_cast<QComboBox*>(watched)) {
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}
