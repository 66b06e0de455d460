// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AboutWindow.h"
#include "ui_AboutWindow.h"

#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <Qsci/qsciglobal.h>

namespace
{
constexpr int logoSize = 112;
}

AboutWindow::AboutWindow(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::AboutWindow>())
{
    ui->setupUi(this);
    Images::showIn(*ui->imgLogo, QStringLiteral("logo"), logoSize);
    TextLook::enlarge(*ui->lblVersion, 1.5);
    ui->lblVersion->setText(QStringLiteral("Varnock %1").arg(QStringLiteral(VARNOCK_VERSION)));
    ui->lblAbout->setText(
        QStringLiteral("Sends NC programs to CNC controls over RS-232 and receives programs from them."));
    ui->lblLicence->setText(QStringLiteral("Free software under the GNU General Public License, version 3 or later. "
                                           "It comes without any warranty."));
    ui->lblLibraries->setText(QStringLiteral("Qt %1, QScintilla %2")
                                  .arg(QString::fromLatin1(qVersion()), QStringLiteral(QSCINTILLA_VERSION_STR)));
    TextLook::dim(*ui->lblLibraries);
    TextLook::dim(*ui->lblLicence);
    connect(ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

AboutWindow::~AboutWindow() = default;
