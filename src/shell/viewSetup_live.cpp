// SPDX-License-Identifier: GPL-3.0-or-later
// What the form shows as the operator types. Nothing here changes what is stored.
#include "shell/viewSetup.h"
#include "ui_viewSetup.h"

#include "config/ControlCodes.h"
#include "config/g.h"
#include "config/LineWords.h"
#include "platform/DeviceList.h"
#include "protocol/Framing.h"
#include "shell/LineSummary.h"
#include "widgets/TextLook.h"

#include <QEvent>
#include <QFile>
#include <QResizeEvent>

namespace
{
constexpr int columnCharacters = 75; // width beyond which a column's fields would only get longer

// A disabled field tells the reason in its tool tip; an enabled one has the tool tip that the form gives it.
void enable(QWidget& field, bool enabled, const QString& reason)
{
    static const char usualTip[] = "usualToolTip";
    if (!field.property(usualTip).isValid()) field.setProperty(usualTip, field.toolTip());
    field.setEnabled(enabled);
    field.setToolTip(enabled ? field.property(usualTip).toString() : reason);
}

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
    for (auto* hint : {ui->lblPortHint, ui->lblFlowHint, ui->lblRepeatHint, ui->lblEOBBytes, ui->lblSOTBytes,
                       ui->lblEOTBytes, ui->lblKept})
        TextLook::dim(*hint);
    QFont bold = ui->lblSummary->font();
    bold.setBold(true);
    ui->lblSummary->setFont(bold);
    ui->boxColumns->setMaximumWidth(2 * columnCharacters * fontMetrics().averageCharWidth());
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
    showFraming();
    const bool changed = shownValues() != storedValues_;
    if (changed || ui->lblSaved->text() != QLatin1String("Saved"))
        ui->lblSaved->setText(changed ? QStringLiteral("Unsaved changes") : QString());
}

void viewSetup::showLine()
{
    const auto flow = flowControl(ui->cboFlow->currentIndex());
    const qint64 baud = g::iVal(ui->cboBaud->currentText());
    QString summary = LineWords::openedLine(
        {baud, dataFormat(ui->cboDBPar->currentIndex()), g::iVal(ui->cboStopBits->currentText()), flow});
    if (ui->cboBaud->findText(QString::number(baud)) < 0)
        summary += QStringLiteral("\nThis speed is not in the list: the port may refuse it.");
    ui->lblSummary->setText(summary);

    const bool isXModem = flow == FlowControl::XModem;
    enable(*ui->cboDBPar, !isXModem, QStringLiteral("XModem always has 8 data bits without parity"));
    enable(*ui->cboXModemNumbers, isXModem, QStringLiteral("Only XModem numbers its blocks"));
    enable(*ui->chkWaitXOn, !isXModem, QStringLiteral("With XModem the control always asks for the first block"));
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

void viewSetup::showPort()
{
    const QString port = ui->cboPorts->currentText();
    QString hint = DeviceList::description(port);
    if (port.isEmpty()) {
        hint = QStringLiteral("Choose the port that the machine's cable is plugged into.");
    } else if (!QFile::exists(port)) {
        hint = QStringLiteral("This port is not present now.");
    }
    ui->lblPortHint->setText(hint);
    ui->lblPortHint->setHidden(hint.isEmpty());
}

// The bytes come from the same functions that sending uses.
void viewSetup::showFraming()
{
    const bool isXModem = flowControl(ui->cboFlow->currentIndex()) == FlowControl::XModem;
    const auto type = Framing::controlType(ui->cboMode->currentText());
    const QString eob = ControlCodes::endOfBlock(ui->cboEOB->currentText());
    ui->lblEOBBytes->setText(sends(g::getBytes(eob)));

    const QString reason = QStringLiteral("XModem sends only the program, in blocks");
    enable(*ui->txtSOT, !isXModem, reason);
    enable(*ui->txtEOT, !isXModem, reason);
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
