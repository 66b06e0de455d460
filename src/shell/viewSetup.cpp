// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/viewSetup.h"
#include "ui_viewSetup.h"

#include "config/g.h"
#include "config/LineSettings.h"
#include "config/NotificationNames.h"
#include "serial/SerialLine.h"
#include "shell/PortWords.h"
#include "widgets/FileDialogs.h"

#include <QComboBox>

namespace
{
// Shows a value that the list may lack: it becomes the first item, so that a stored value is never lost.
void showValue(QComboBox& box, const QString& value)
{
    if (value.isEmpty()) {
        box.setCurrentIndex(0);
        return;
    }
    if (box.findText(value, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0) box.insertItem(0, value);
    box.setCurrentText(value);
}

// Shows a value if the list has it; false if not.
bool showListed(QComboBox& box, const QString& value)
{
    const int index = box.findText(value, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 0) return false;
    box.setCurrentIndex(index);
    return true;
}
} // namespace

viewSetup::viewSetup(QWidget* parent, DeviceSources devices)
    : QWidget(parent), devices_(std::move(devices)), ui(std::make_unique<Ui::viewSetup>())
{
    ui->setupUi(this);
    // A completed "/dev/ttyUSB1" would become "/dev/ttyUSB10", another machine's line.
    for (auto* box : findChildren<QComboBox*>())
        if (box->isEditable()) box->setCompleter(nullptr);
    connect(ui->btnTXBrowse, &QPushButton::clicked, this, &viewSetup::btnTXBrowse);
    connect(ui->btnSave, &QPushButton::clicked, this, &viewSetup::btnSave_Click);
    connect(ui->btnLastingName, &QPushButton::clicked, this, &viewSetup::btnLastingName_Click);
    connect(ui->btnRevert, &QPushButton::clicked, this, &viewSetup::btnRevert_Click);
    setFocusProxy(ui->txtMCName);
    watchFields();
}

viewSetup::~viewSetup() = default;

void viewSetup::initialize(int mcIndex)
{
    mc = g::mcIcons[mcIndex];
    populateModeCombo();
    populatePortsCombo();
    btnRevert_Click();
}

void viewSetup::btnRevert_Click()
{
    ui->cboBaud->setCurrentIndex(-1); // what it shows for a speed that no port can do
    offerStoredSpeed();
    selectCurrentValues();
    storedValues_ = shownValues();
    ui->lblSaved->clear();
    showPort();
    showLive();
}

// One that a port may do, although it is not usual: it was typed, and the form has to show it again.
void viewSetup::offerStoredSpeed()
{
    if (mc->MCBAUD <= 0 || !SerialLine::hasSpeed(static_cast<unsigned long>(mc->MCBAUD))) return;
    int at = 0;
    while (at < ui->cboBaud->count() && g::iVal(ui->cboBaud->itemText(at)) < mc->MCBAUD)
        ++at;
    if (g::iVal(ui->cboBaud->itemText(at)) != mc->MCBAUD)
        ui->cboBaud->insertItem(at, QString::number(mc->MCBAUD), true);
}

void viewSetup::populateModeCombo()
{
    ui->cboMode->addItems(
        {QStringLiteral("Auto"), QStringLiteral("Fanuc"), QStringLiteral("Haas"), QStringLiteral("Okuma")});
}

void viewSetup::populatePortsCombo()
{
    QStringList paths;
    if (sp.findSerialDevices(paths) != 0) return;
    const DeviceNames names(devices_);
    ui->cboPorts->clear();
    for (const auto& path : names.lastingFirst(paths))
        ui->cboPorts->addPort(path, PortWords::adapter(path, names));
}

void viewSetup::selectCurrentValues()
{
    ui->txtMCName->setText(mc->MCNAME);
    showValue(*ui->cboMode, mc->MCMODE);
    showValue(*ui->cboPorts, mc->MCPORT);
    ui->txtTXDataFolder->setText(mc->MCOUTDIR);
    ui->txtTXDataFolder->setCursorPosition(0);
    ui->cboFlow->setCurrentIndex(static_cast<int>(mc->MCFLOW));
    ui->cboXModemNumbers->setCurrentIndex(mc->MCXMODEM0 ? 1 : 0);
    ui->chkWaitXOn->setChecked(mc->MCWAIT);
    ui->chkAutoRepeat->setChecked(mc->MCREPEAT);
    if (!showListed(*ui->cboBlockDelay, QString::number(mc->MCBLKTIC))) ui->cboBlockDelay->setCurrentIndex(2);
    // A rate that is no port's shows in the block delay, not here: an oddity that users are used to, so it stays.
    if (!showListed(*ui->cboBaud, QString::number(mc->MCBAUD)))
        ui->cboBlockDelay->setCurrentText(QStringLiteral("1200"));
    ui->cboEIA->setCurrentIndex(mc->MCEIA ? 1 : 0);
    ui->cboDBPar->setCurrentIndex(static_cast<int>(dataFormat(mc->MCDBPAR)));
    ui->cboStopBits->setCurrentIndex(mc->MCSBITS == 2 ? 1 : 0);
    if (!showListed(*ui->cboEOB, mc->MCTXEOB)) ui->cboEOB->setCurrentIndex(0);
    ui->txtSOT->setText(mc->MCTXSOT);
    ui->txtEOT->setText(mc->MCTXEOT);
    ui->chkStripComments->setChecked(mc->MCSTRIPCOMMENTS);
    ui->chkStripEmptyLines->setChecked(mc->MCSTRIPEMPTYLINES);
    ui->cboTxTimeout->setCurrentText(QString::number(mc->MCTXTOUT));
}

void viewSetup::btnTXBrowse()
{
    auto* dialog = FileDialogs::make(this, QStringLiteral("Program folder"), ui->txtTXDataFolder->text());
    dialog->setObjectName(QStringLiteral("folderDialog"));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Select Folder"));
    connect(dialog, &QFileDialog::fileSelected, ui->txtTXDataFolder, &QLineEdit::setText);
    dialog->open();
}

void viewSetup::btnSave_Click()
{
    mc->MCNAME = ui->txtMCName->text();
    mc->MCMODE = ui->cboMode->currentText();
    if (mc->MCPORT != ui->cboPorts->currentText()) mc->portNow.clear();
    mc->MCPORT = ui->cboPorts->currentText();
    mc->MCOUTDIR = ui->txtTXDataFolder->text();
    mc->MCINDIR.clear();
    mc->MCFLOW = ui->cboFlow->currentIndex();
    mc->MCXMODEM0 = ui->cboXModemNumbers->currentIndex() == 1;
    mc->MCWAIT = ui->chkWaitXOn->isChecked();
    mc->MCREPEAT = ui->chkAutoRepeat->isChecked();
    mc->MCDELAY = 0;
    mc->MCCRLF = false;
    mc->MCBLKTIC = g::iVal(ui->cboBlockDelay->currentText());
    mc->MCBAUD = g::iVal(ui->cboBaud->currentText());
    mc->MCEIA = ui->cboEIA->currentText() == QLatin1String("EIA");
    // XModem opens the port with 8 data bits, whatever the box shows; this code has always been stored along with it.
    const bool isXModem = flowControl(mc->MCFLOW) == FlowControl::XModem;
    mc->MCDBPAR = isXModem ? static_cast<qint64>(DataFormat::SevenBits) : ui->cboDBPar->currentIndex();
    mc->MCSBITS = g::iVal(ui->cboStopBits->currentText());
    mc->MCTXEOB = ui->cboEOB->currentText();
    mc->MCTXSOT = ui->txtSOT->text();
    mc->MCTXEOT = ui->txtEOT->text();
    mc->MCSTRIPCOMMENTS = ui->chkStripComments->isChecked();
    mc->MCSTRIPEMPTYLINES = ui->chkStripEmptyLines->isChecked();
    // The form has no controls for these; every save puts them back to fixed values on purpose.
    mc->MCRXEOBCHAR = QStringLiteral("CR");
    mc->MCREQST = QStringLiteral("SEND");
    mc->MCEXTENS.clear();
    mc->MCRXTOUT = 3;
    mc->MCTXTOUT = g::iVal(ui->cboTxTimeout->currentText());
    mc->MCNOTFOUNDMSG.clear();
    mc->MCFNAMEISTXT = false;
    mc->MCAUTOSTARTREMO = false;
    mc->MCREMOENABLED = false;
    mc->MCFADALTA1 = false;
    mc->MCREMOPFX.clear();
    mc->MCSAVEPFX = false;
    g::saveAllMcSettings();
    storedValues_ = shownValues();
    ui->lblSaved->setText(QStringLiteral("Saved"));
    nc->post(Notifications::setupSaveButton_Click, nullptr, {{Notifications::machineIndex, mc->MCINDEX}});
}
